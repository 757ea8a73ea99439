// SPDX-License-Identifier: Apache-2.0
//
// A server in this process, with which the library itself encodes requests and reads recorded
// replies.

#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <thread>

#include "bodies/codec.h"

namespace hcy::tools {

// Sets an environment variable until it is destroyed. No other thread may use the environment when
// it begins or ends.
class TemporaryVariable {
 public:
  TemporaryVariable(const char* name, const char* value);
  TemporaryVariable(const TemporaryVariable&) = delete;
  TemporaryVariable& operator=(const TemporaryVariable&) = delete;
  ~TemporaryVariable();

 private:
  const char* name_;
  std::optional<std::string> before_;
};

// Answers one POST on 127.0.0.1 with a body, and keeps the body of the request. Only a client that
// knows the URL gets an answer. While it exists, no request of the process to 127.0.0.1 goes
// through a proxy.
class Loopback {
 public:
  // Throws std::system_error.
  explicit Loopback(std::string reply);
  Loopback(const Loopback&) = delete;
  Loopback& operator=(const Loopback&) = delete;
  ~Loopback() { end(); }

  std::string url() const;

  // Ends the server, and throws what its thread threw, for example std::bad_alloc. The request has
  // no headers if it did not arrive completely.
  EncodedRequest takeRequest();

 private:
  struct Client;

  void run();
  bool serve(Client& client);
  void end();

  TemporaryVariable lowerCase_{"no_proxy", "127.0.0.1"}, upperCase_{"NO_PROXY", "127.0.0.1"};
  std::string reply_;
  std::string path_;
  EncodedRequest request_;
  std::exception_ptr problem_;  // of the thread
  std::uint16_t port_ = 0;
  int listener_ = -1;
  std::thread thread_;
};

}  // namespace hcy::tools
