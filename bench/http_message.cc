// SPDX-License-Identifier: Apache-2.0

#include "http_message.h"

#include <charconv>
#include <cstring>
#include <stdexcept>

namespace hcy::bench {
namespace {

std::size_t declaredLength(std::string_view head) {
  constexpr std::string_view key = "\r\nContent-Length: ";
  const std::size_t found = head.find(key);
  if (found == std::string_view::npos) throw std::runtime_error("a message without a length");
  head.remove_prefix(found + key.size());
  std::size_t length = 0;
  std::from_chars(head.data(), head.data() + head.size(), length);
  return length;
}

}  // namespace

bool MessageReceiver::receiveHead(const Socket& socket) {
  constexpr std::string_view end = "\r\n\r\n";
  filled_ = 0;
  std::size_t found = std::string_view::npos;
  while (found == std::string_view::npos) {
    if (filled_ == sizeof buffer_) throw std::runtime_error("a head too large");
    const std::size_t count = socket.receive(buffer_ + filled_, sizeof buffer_ - filled_);
    if (count == 0) return false;
    filled_ += count;
    found = std::string_view(buffer_, filled_).find(end);
  }
  headSize_ = found + end.size();
  bodySize_ = declaredLength(head());
  if (filled_ - headSize_ > bodySize_) throw std::runtime_error("more than one message at a time");
  return true;
}

void MessageReceiver::receiveBody(const Socket& socket, char* body) const {
  std::size_t received = filled_ - headSize_;
  std::memcpy(body, buffer_ + headSize_, received);
  while (received < bodySize_) {
    const std::size_t count = socket.receive(body + received, bodySize_ - received);
    if (count == 0) throw std::runtime_error("a body that ends early");
    received += count;
  }
}

}  // namespace hcy::bench
