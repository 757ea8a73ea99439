// SPDX-License-Identifier: Apache-2.0
//
// A growing block of bytes that never writes what its user will write anyway, and whose bytes count
// against the memory for messages.
//
// That memory is for all calls: bodies that arrive, arguments, outputs, and replies until the
// client has read them. Two bytes of a request can stand for an array that takes hundreds, so what
// all calls together may take is bounded: at the bound std::bad_alloc is thrown, and the one call
// fails instead of the system ending the program.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "budget.h"

namespace hcy::server {

// That much of each message is not counted, so that small calls succeed while large ones have
// taken all.
inline constexpr std::size_t kUncountedMemory = std::size_t{64} << 10;

Budget& messageMemory();

// Room for a few of the longest bodies, but never more than half of what the machine has.
std::size_t messageMemoryLimitFor(std::uint64_t maxBody);

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
  void countTo(std::size_t size);

  BudgetShare counted_{messageMemory()};
  std::unique_ptr<char, Free> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace hcy::server
