// SPDX-License-Identifier: Apache-2.0
#include "loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace hcy::test {
namespace {

void require(bool succeeded, const char* what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// SO_REUSEADDR lets a listener join the socket that keeps the port reserved.
FileDescriptor bindTo(std::uint16_t port, int flags) {
  FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  require(socket.isOpen(), "socket");
  const int on = 1;
  require(::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0,
          "SO_REUSEADDR");
  const sockaddr_in address = loopbackAddress(port);
  require(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
          "bind");
  return socket;
}

}  // namespace

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    close();
    descriptor_ = std::exchange(other.descriptor_, -1);
  }
  return *this;
}

FileDescriptor::~FileDescriptor() { close(); }

void FileDescriptor::close() noexcept {
  if (isOpen()) ::close(std::exchange(descriptor_, -1));
}

std::string loopbackUrl(std::uint16_t port, const std::string& path) {
  return "http://127.0.0.1:" + std::to_string(port) + path;
}

FileDescriptor listenOn(std::uint16_t port, int backlog) {
  FileDescriptor socket = bindTo(port, SOCK_NONBLOCK);
  require(::listen(socket.get(), backlog) == 0, "listen");
  return socket;
}

FileDescriptor connectTo(std::uint16_t port) {
  FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  require(socket.isOpen(), "socket");
  const sockaddr_in address = loopbackAddress(port);
  require(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
          "connect");
  return socket;
}

UnlistenedPort::UnlistenedPort() : socket_(bindTo(0, 0)) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  require(::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &size) == 0,
          "getsockname");
  number_ = ntohs(address.sin_port);
}

// A backlog of 0 holds one connection; the listener turns readable once that one is queued.
StalledPort::StalledPort()
    : listener_(listenOn(port_.number(), 0)), filler_(connectTo(port_.number())) {
  pollfd queued{listener_.get(), POLLIN, 0};
  while (::poll(&queued, 1, -1) < 0) require(errno == EINTR, "poll");
}

}  // namespace hcy::test
