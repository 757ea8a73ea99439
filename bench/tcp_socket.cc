// SPDX-License-Identifier: Apache-2.0

#include "tcp_socket.h"

#include <sys/uio.h>

#include <algorithm>

namespace hcy::bench {

void Socket::send(const void* head, std::size_t headSize, const void* body,
                  std::size_t bodySize) const {
  // sendmsg() does not write through the pointers.
  iovec parts[2] = {{const_cast<void*>(head), headSize}, {const_cast<void*>(body), bodySize}};
  msghdr message{};
  message.msg_iov = parts;
  message.msg_iovlen = 2;
  while (parts[0].iov_len + parts[1].iov_len > 0) {
    const ssize_t count = ::sendmsg(descriptor_, &message, MSG_NOSIGNAL);
    if (count < 0) throwErrno("send");
    auto sent = static_cast<std::size_t>(count);
    for (iovec& part : parts) {
      const std::size_t ofPart = std::min(sent, part.iov_len);
      part.iov_base = static_cast<char*>(part.iov_base) + ofPart;
      part.iov_len -= ofPart;
      sent -= ofPart;
    }
  }
}

std::size_t Socket::receive(void* buffer, std::size_t size) const {
  const ssize_t count = ::recv(descriptor_, buffer, size, 0);
  if (count < 0) throwErrno("recv");
  return static_cast<std::size_t>(count);
}

sockaddr_in loopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace hcy::bench
