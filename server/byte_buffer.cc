// SPDX-License-Identifier: Apache-2.0

#include "byte_buffer.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace hcy::server {

Budget& messageMemory() {
  static Budget memory(std::numeric_limits<std::size_t>::max());
  return memory;
}

std::size_t messageMemoryLimitFor(std::uint64_t maxBody) {
  const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
  const auto pageSize = static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 0L));
  constexpr std::uint64_t always = std::uint64_t{64} << 20;
  return std::max(always, std::min(8 * maxBody + always, pages * pageSize / 2));
}

ByteBuffer::ByteBuffer(ByteBuffer&& other) noexcept
    : counted_(std::move(other.counted_)),
      bytes_(std::move(other.bytes_)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

ByteBuffer& ByteBuffer::operator=(ByteBuffer&& other) noexcept {
  counted_ = std::move(other.counted_);
  bytes_ = std::move(other.bytes_);
  size_ = std::exchange(other.size_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  return *this;
}

void ByteBuffer::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  // realloc moves the pages of a large block instead of copying them.
  void* grown = std::realloc(bytes_.get(), capacity);
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(bytes_.release());
  bytes_.reset(static_cast<char*>(grown));
  capacity_ = capacity;
}

void ByteBuffer::append(const void* bytes, std::size_t count) {
  if (count == 0) return;
  countTo(size_ + count);
  if (count > capacity_ - size_) reserve(std::max(size_ + count, 2 * capacity_));
  std::memcpy(bytes_.get() + size_, bytes, count);
  size_ += count;
}

void ByteBuffer::resizeUninitialized(std::size_t size) {
  countTo(size);
  reserve(size);
  size_ = size;
}

void ByteBuffer::countTo(std::size_t size) {
  if (size > kUncountedMemory && !counted_.growTo(size - kUncountedMemory)) throw std::bad_alloc();
}

}  // namespace hcy::server
