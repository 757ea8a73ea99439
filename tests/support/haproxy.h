// SPDX-License-Identifier: Apache-2.0
//
// HAProxy as a child process of a test, with a configuration of two servers as
// examples/scale-out/haproxy.cfg has it:
//
//   const HAProxy proxy(file, first.port(), second.port());
//   call(proxy.url("/echo"));
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "loopback.h"
#include "pki.h"

namespace hcy::test {

// Runs from construction to destruction, on a port that it picked. When the process of the test
// ends in whatever way, the proxy ends too.
class HAProxy {
 public:
  HAProxy(const std::string& configurationFile, std::uint16_t firstPort, std::uint16_t secondPort);
  // Ends the program with HAProxy's own account if it could not serve.
  ~HAProxy();
  HAProxy(const HAProxy&) = delete;
  HAProxy& operator=(const HAProxy&) = delete;

  std::string url(const std::string& path) const { return port_.url(path); }

 private:
  TestDirectory directory_;
  UnlistenedPort port_;
  pid_t pid_ = -1;
};

}  // namespace hcy::test
