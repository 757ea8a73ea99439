// SPDX-License-Identifier: Apache-2.0

#include "http/kept_connections.h"

#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>

namespace hcy {

bool KeptConnections::Connection::isOpen() const {
  struct stat status {};
  return ::fstat(socket, &status) == 0 && S_ISSOCK(status.st_mode) && status.st_ino == inode;
}

void KeptConnections::note(CURL* handle) {
  Connection last;
  long newConnections = 0;
  curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &last.socket);
  curl_easy_getinfo(handle, CURLINFO_NUM_CONNECTS, &newConnections);
  const auto isOther = [&last](const Connection& connection) {
    return connection.socket != CURL_SOCKET_BAD && connection.socket != last.socket;
  };
  // The rule: the one connection that there is has served once more.
  if (newConnections == 0 && std::ranges::none_of(connections_, isOther)) return;

  std::ranges::replace_if(
      connections_, [](const Connection& connection) { return !connection.isOpen(); },
      Connection{});
  struct stat status {};
  if (last.socket == CURL_SOCKET_BAD || ::fstat(last.socket, &status) != 0) return;
  last.inode = status.st_ino;
  const auto isFree = [&last](const Connection& connection) {
    return connection.socket == last.socket || connection.socket == CURL_SOCKET_BAD;
  };
  *std::find_if(connections_.begin(), connections_.end() - 1, isFree) = last;
}

void KeptConnections::dropUnread() const {
  for (const Connection& connection : connections_) {
    char byte = 0;
    if (connection.socket != CURL_SOCKET_BAD &&
        ::recv(connection.socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0) {
      ::shutdown(connection.socket, SHUT_RDWR);
    }
  }
}

}  // namespace hcy
