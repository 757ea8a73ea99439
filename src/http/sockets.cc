// SPDX-License-Identifier: Apache-2.0

#include "http/sockets.h"

#include <sys/socket.h>
#include <sys/stat.h>

namespace hcy {

std::uint64_t socketIdentity(curl_socket_t socket) {
  struct stat status {};
  return ::fstat(socket, &status) == 0 && S_ISSOCK(status.st_mode) ? status.st_ino : 0;
}

bool hasUnread(curl_socket_t socket) {
  char byte = 0;
  return ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

void shutDown(curl_socket_t socket) { ::shutdown(socket, SHUT_RDWR); }

}  // namespace hcy
