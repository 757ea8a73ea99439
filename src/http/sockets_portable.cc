// SPDX-License-Identifier: Apache-2.0

#include "http/sockets.h"

#ifdef _WIN32
#include <ws2tcpip.h>
#else
#include <sys/socket.h>
#endif

#include <functional>
#include <string_view>

namespace hcy {
namespace {

#ifdef _WIN32
constexpr int kBothWays = SD_BOTH;
#else
constexpr int kBothWays = SHUT_RDWR;
#endif

// The address that one of the two calls gives, as a number; 0 if it gives none.
template <class Call>
std::uint64_t addressOf(Call call, curl_socket_t socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (call(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(&address), sizeof address);
  return std::hash<std::string_view>{}(bytes) | 1;
}

}  // namespace

// No two open connections have both addresses in common.
std::uint64_t socketIdentity(curl_socket_t socket) {
  const std::uint64_t local = addressOf(::getsockname, socket);
  const std::uint64_t remote = addressOf(::getpeername, socket);
  return local == 0 || remote == 0 ? 0 : local ^ (remote << 1);
}

bool hasUnread(curl_socket_t socket) {
  char byte = 0;
  return ::recv(socket, &byte, 1, MSG_PEEK) > 0;
}

void shutDown(curl_socket_t socket) { ::shutdown(socket, kBothWays); }

}  // namespace hcy
