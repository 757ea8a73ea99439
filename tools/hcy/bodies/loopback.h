// SPDX-License-Identifier: Apache-2.0
//
// A server in this process, with which the library itself encodes requests and reads recorded
// replies.

#pragma once

#include <cstdint>
#include <string>
#include <thread>

#include "bodies/codec.h"

namespace hcy::tools {

// Answers one POST on 127.0.0.1 with a body, and keeps the body of the request. Only a client that
// knows the URL gets an answer. Disables the proxy of the environment for the rest of the process.
class Loopback {
 public:
  // Throws std::system_error.
  explicit Loopback(std::string reply);
  Loopback(const Loopback&) = delete;
  Loopback& operator=(const Loopback&) = delete;
  ~Loopback() { end(); }

  std::string url() const;

  // Ends the server. The request has no headers if it did not arrive completely.
  EncodedRequest takeRequest();

 private:
  void run();
  bool serve(int connection);
  void end();

  std::string reply_;
  std::string path_;
  EncodedRequest request_;
  std::uint16_t port_ = 0;
  int listener_ = -1;
  std::thread thread_;
};

}  // namespace hcy::tools
