// SPDX-License-Identifier: Apache-2.0
//
// nginx as a child process of a test: it speaks TLS on a port of 127.0.0.1 and passes each request
// on to another server.
//
//   const Nginx nginx({.certificate = authority.issue(), .upstream = server.url("")});
//   call(nginx.url("/f"));
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "loopback.h"
#include "pki.h"

namespace hcy::test {

struct NginxSettings {
  Certificate certificate = {};
  std::string upstream = {};                  // a URL without a path
  std::string protocols = "TLSv1.2 TLSv1.3";  // those that it agrees to
  std::string clientAuthorityFile = {};       // if set, a client must show a certificate of it
  bool http2 = false;                         // whether it offers HTTP/2, too
};

// Runs from construction to destruction; ends with the test's process in whatever way that ends.
// Requests reach the upstream with the headers X-Tls-Version, X-Protocol ("HTTP/1.1"), X-Client
// (the subject of the client's certificate) and X-Connection-Requests (how many the connection has
// brought so far).
class Nginx {
 public:
  explicit Nginx(const NginxSettings& settings);
  // Ends the program with nginx's own account if it could not serve.
  ~Nginx();
  Nginx(const Nginx&) = delete;
  Nginx& operator=(const Nginx&) = delete;

  std::string url(const std::string& path = "/f", const std::string& host = "127.0.0.1") const {
    return "https://" + host + ":" + std::to_string(port_.number()) + path;
  }
  std::uint16_t port() const { return port_.number(); }

 private:
  TestDirectory directory_;
  UnlistenedPort port_;
  pid_t pid_ = -1;
};

}  // namespace hcy::test
