// SPDX-License-Identifier: Apache-2.0
//
// What libcurl does not say of its sockets. sockets.cc is for Linux, sockets_portable.cc for
// HCY_PORTABLE.

#pragma once

#include <curl/curl.h>

#include <cstdint>

namespace hcy {

// A number that another socket does not have, even if it gets the descriptor of this one after it
// was closed. 0 if the descriptor is not an open socket.
std::uint64_t socketIdentity(curl_socket_t socket);

// Whether bytes lie unread on one of libcurl's sockets, which never wait.
bool hasUnread(curl_socket_t socket);

// Nothing is sent or received any more.
void shutDown(curl_socket_t socket);

}  // namespace hcy
