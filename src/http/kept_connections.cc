// SPDX-License-Identifier: Apache-2.0

#include "http/kept_connections.h"

#include <algorithm>

#include "http/sockets.h"

namespace hcy {

bool KeptConnections::Connection::isOpen() const {
  return identity != 0 && socketIdentity(socket) == identity;
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
  if (last.socket == CURL_SOCKET_BAD) return;
  last.identity = socketIdentity(last.socket);
  if (last.identity == 0) return;
  const auto isFree = [&last](const Connection& connection) {
    return connection.socket == last.socket || connection.socket == CURL_SOCKET_BAD;
  };
  *std::find_if(connections_.begin(), connections_.end() - 1, isFree) = last;
}

void KeptConnections::dropUnread() const {
  for (const Connection& connection : connections_) {
    if (connection.socket != CURL_SOCKET_BAD && hasUnread(connection.socket)) {
      shutDown(connection.socket);
    }
  }
}

}  // namespace hcy
