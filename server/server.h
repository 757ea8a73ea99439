// SPDX-License-Identifier: Apache-2.0
//
// The listening socket, the threads, and the orderly end.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "function_table.h"
#include "options.h"

namespace hcy::server {

class Server {
 public:
  // Listens when it returns, and takes note of SIGINT and SIGTERM from then on; throws a
  // std::exception if it cannot listen or the TLS files are of no use.
  Server(const Options& options, std::vector<Function> functions);
  ~Server();

  // Where it listens, with the port that was picked.
  std::string url() const;

  // Serves until SIGINT or SIGTERM, or until the standard input ends if that was asked for.
  void run();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace hcy::server
