// SPDX-License-Identifier: Apache-2.0
//
// The listening socket, the threads, and the orderly end.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "options.h"

namespace hcy::server {

struct Function;

class Server {
 public:
  // Listens when it returns; throws a std::exception if it cannot listen or the TLS files are of no
  // use. If it owns the process, SIGINT and SIGTERM end it from then on.
  Server(const Options& options, std::vector<Function> functions);
  ~Server();

  // Where it listens, with the port that was picked.
  std::string url() const;

  // Serves until stop(), or what the options say, happens. Calls `started` once all threads run,
  // and throws std::system_error if one cannot be started.
  void run(const std::function<void()>& started = [] {});

  // Ends run(), which then answers no more calls and returns soon. For any thread.
  void stop();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace hcy::server
