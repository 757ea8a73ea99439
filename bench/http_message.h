// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

#include "tcp_socket.h"

namespace hcy::bench {

// Receives one HTTP message that declares its length, the next one not yet begun. The head is kept
// here; the body is received where it is wanted, but for what came with the head.
class MessageReceiver {
 public:
  // Returns false at the end of the connection.
  bool receiveHead(const Socket& socket);

  std::string_view head() const { return {buffer_, headSize_}; }
  std::size_t bodySize() const { return bodySize_; }

  // Fills `body`, which has room for bodySize() bytes.
  void receiveBody(const Socket& socket, char* body) const;

 private:
  char buffer_[4096];
  std::size_t filled_ = 0;
  std::size_t headSize_ = 0;
  std::size_t bodySize_ = 0;
};

}  // namespace hcy::bench
