// SPDX-License-Identifier: Apache-2.0
//
// What libcurl does not say of its sockets. sockets.cc is for Linux, sockets_portable.cc for
// HCY_PORTABLE.

#pragma once

#include <curl/curl.h>

#include <cstdint>

namespace hcy {

// Tells a socket from others that get its number once it is closed; 0 if there is no such socket.
std::uint64_t socketIdentity(curl_socket_t socket);

// Whether bytes lie unread on one of libcurl's sockets, which never wait.
bool hasUnread(curl_socket_t socket);

// Nothing is sent or received any more.
void shutDown(curl_socket_t socket);

}  // namespace hcy
