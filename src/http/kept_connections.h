// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <array>
#include <cstdint>

namespace hcy {

// The connections that libcurl has kept for a handle, to one server or to several.
class KeptConnections {
 public:
  // To be called after each transfer, the only time when libcurl opens and closes connections.
  // Notes the transfer's own, if libcurl has kept it, and forgets those that are closed.
  void note(CURL* handle);

  // To be called before a transfer: what lies unread on a connection is not the answer to the next
  // request. libcurl takes a connection that is shut down for dead, and makes another.
  void dropUnread() const;

 private:
  // The number of a socket that libcurl has closed may be that of another file by now.
  struct Connection {
    curl_socket_t socket = CURL_SOCKET_BAD;
    std::uint64_t identity = 0;
    bool isOpen() const;
  };

  // libcurl keeps no more than these for a handle.
  std::array<Connection, 5> connections_;
};

}  // namespace hcy
