// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace hcy::bench {

[[noreturn]] inline void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Owns a TCP socket.
class Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {
    if (descriptor < 0) throwErrno("socket");
  }
  Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Socket& operator=(Socket&&) = delete;
  ~Socket() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  int get() const { return descriptor_; }

  // Small replies go out at once.
  void setNoDelay() const {
    const int on = 1;
    if (setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) {
      throwErrno("TCP_NODELAY");
    }
  }

  // Sends a head and a body, all of both, in as few pieces as the kernel takes them.
  void send(const void* head, std::size_t headSize, const void* body, std::size_t bodySize) const;

  // Receives what is there, at most `size` bytes; 0 at the end.
  std::size_t receive(void* buffer, std::size_t size) const;

 private:
  int descriptor_;
};

// A port of 127.0.0.1; 0 stands for any.
sockaddr_in loopbackAddress(std::uint16_t port);

}  // namespace hcy::bench
