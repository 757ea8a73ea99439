// SPDX-License-Identifier: Apache-2.0
//
// A server in this process, by which the library itself shows what it sends and reads what was
// recorded.

#pragma once

#include <cstdint>
#include <string>
#include <thread>

#include "bodies/codec.h"

namespace hcy::tools {

// Answers one POST on 127.0.0.1 with a body, and keeps that of the request. Nobody who does not
// know the URL gets an answer. The proxy of the environment is set aside for good.
class Loopback {
 public:
  // Throws std::system_error.
  explicit Loopback(std::string reply);
  Loopback(const Loopback&) = delete;
  Loopback& operator=(const Loopback&) = delete;
  ~Loopback() { end(); }

  std::string url() const;

  // Ends the server. Of what came there are no headers if nothing, or not all, came.
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
