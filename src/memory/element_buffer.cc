// SPDX-License-Identifier: Apache-2.0

#include "memory/element_buffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "memory/kept_blocks.h"
#include "memory/large_block.h"

namespace hcy {

ElementBuffer ElementBuffer::inside(const std::shared_ptr<void>& owner, std::byte* data,
                                    std::size_t size) {
  ElementBuffer buffer;
  buffer.storage_.block.owner = new std::shared_ptr<void>(owner);
  buffer.storage_.block.data = data;
  buffer.place_ = Place::Inside;
  buffer.truncate(size);
  return buffer;
}

ElementBuffer ElementBuffer::copy() const {
  ElementBuffer copied;
  copied.reserve(size_);
  if (size_ != 0) std::memcpy(copied.data(), data(), size_);
  copied.truncate(size_);
  return copied;
}

void ElementBuffer::resize(std::size_t size) {
  if (size > capacity()) {
    // Fresh memory for a new array is zero already.
    const bool isNew = size_ == 0;
    grow(size, isNew);
    if (isNew) {
      truncate(size);
      return;
    }
  }
  if (size > size_) std::memset(data() + size_, 0, size - size_);
  truncate(size);
}

std::byte* ElementBuffer::extend(std::size_t size) {
  const std::size_t needed = size_ + size;
  if (needed > capacity()) {
    const std::size_t step = size_ + size_ / 2;
    grow(std::max(needed, step), false);
  }
  std::byte* const added = data() + size_;
  truncate(needed);
  return added;
}

void ElementBuffer::grow(std::size_t capacity, bool isZero) {
  Block block{nullptr, {capacity}};
  const Place place = capacity < kLeastMapped ? Place::Heap : Place::Mapped;
  const bool isExtended = place_ == place && size_ != 0;
  if (place == Place::Mapped) {
    char* const old = reinterpret_cast<char*>(storage_.block.data);
    block.data = reinterpret_cast<std::byte*>(
        isExtended ? resizeLargeBlock(old, storage_.block.size, capacity)
                   : mapLargeBlock(capacity));
  } else if (isExtended) {
    block.data = static_cast<std::byte*>(std::realloc(storage_.block.data, capacity));
  } else {
    block.data = isZero ? allocateZeros(capacity) : allocateBlock(capacity);
  }
  if (block.data == nullptr) throw std::bad_alloc();
  if (!isExtended) {
    if (size_ != 0) std::memcpy(block.data, data(), size_);
    release();
  }
  storage_.block = block;
  place_ = place;
}

void ElementBuffer::release() {
  if (place_ == Place::Mapped) {
    unmapLargeBlock(reinterpret_cast<char*>(storage_.block.data), storage_.block.size);
  } else if (place_ == Place::Heap) {
    releaseBlock(storage_.block.data, storage_.block.size);
  } else if (place_ == Place::Inside) {
    delete storage_.block.owner;
  }
}

}  // namespace hcy
