// SPDX-License-Identifier: Apache-2.0

#include "byte_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace hcy::server {

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
  counted_.countTo(size_ + count);
  if (count > capacity_ - size_) reserve(std::max(size_ + count, 2 * capacity_));
  std::memcpy(bytes_.get() + size_, bytes, count);
  size_ += count;
}

void ByteBuffer::resizeUninitialized(std::size_t size) {
  counted_.countTo(size);
  reserve(size);
  size_ = size;
}

}  // namespace hcy::server
