// SPDX-License-Identifier: Apache-2.0
//
// A growing block of bytes that never writes what its user will write anyway, and whose bytes count
// against the memory for messages.

#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "message_memory.h"

namespace hcy::server {

// Every growth throws std::bad_alloc when memory runs out, and leaves the bytes as they were.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  explicit ByteBuffer(std::string_view text) { append(text.data(), text.size()); }
  ByteBuffer(ByteBuffer&& other) noexcept;
  ByteBuffer& operator=(ByteBuffer&& other) noexcept;

  char* data() { return bytes_.get(); }
  const char* data() const { return bytes_.get(); }
  std::size_t size() const { return size_; }

  // Room that is not counted before it is used.
  void reserve(std::size_t capacity);
  void append(const void* bytes, std::size_t count);
  // The bytes behind the old end hold anything.
  void resizeUninitialized(std::size_t size);

 private:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };

  MessageMemoryShare counted_;
  std::unique_ptr<char, Free> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace hcy::server
