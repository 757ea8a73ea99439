// SPDX-License-Identifier: Apache-2.0
//
// HTTP from the client's side: libcurl for what is well-formed, a socket for what is not.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/loopback.h"

namespace hcy::test {

struct HttpReply {
  // 0 if there was no reply; then `failure` tells why.
  long status = 0;
  // By name in lower case.
  std::map<std::string, std::string> header;
  std::string body;
  std::string failure;
};

struct HttpOptions {
  std::string method = "POST";
  std::vector<std::string> headerLines = {};
  std::string authorityFile = {};
  std::string certificateFile = {};
  std::string keyFile = {};
  // One of libcurl's CURL_SSLVERSION_MAX_ constants, or 0.
  long newestTls = 0;
  // That often, each time on a new connection; the last reply counts.
  int times = 1;
};

HttpReply sendRequest(const std::string& url, const std::string& body,
                      const HttpOptions& options = {});

// Sends any bytes.
class RawConnection {
 public:
  explicit RawConnection(std::uint16_t port);
  void send(std::string_view bytes);
  void endSending();
  // Whether something has come that has not been received, or the connection has ended.
  bool hasInput() const;
  // What comes until a line end; empty if the connection ends.
  std::string receiveLine();
  std::string receive(std::size_t count);
  // All that comes until the server ends the connection.
  std::string receiveAll();

 private:
  bool receiveSome();

  FileDescriptor socket_;
  std::string received_;
};

}  // namespace hcy::test
