// SPDX-License-Identifier: Apache-2.0

#include "http/body_block.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "memory/large_block.h"

namespace hcy {
namespace {

// What may be kept stays on the heap.
bool isMapped(std::size_t capacity) { return capacity > SpareBlock::kMostKept; }

}  // namespace

BodyBlock::~BodyBlock() {
  if (isMapped(capacity_)) {
    unmapLargeBlock(data_, capacity_);
  } else {
    std::free(data_);
  }
}

bool BodyBlock::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return true;
  char* grown = nullptr;
  if (isMapped(capacity_)) {
    // A body without a declared length takes many small steps, and each may move all of it. Room
    // that stays untouched takes no memory.
    const std::size_t step = capacity_ / 4;
    if (capacity <= SIZE_MAX - step) capacity += step;
    grown = resizeLargeBlock(data_, capacity_, capacity);
  } else if (isMapped(capacity)) {
    grown = mapLargeBlock(capacity);
    if (grown != nullptr && data_ != nullptr) {
      std::memcpy(grown, data_, capacity_);
      std::free(data_);
    }
  } else {
    grown = static_cast<char*>(std::realloc(data_, capacity));
  }
  if (grown == nullptr) return false;
  data_ = grown;
  capacity_ = capacity;
  return true;
}

void BodyBlock::trim(std::size_t capacity) {
  if (!isMapped(capacity) || capacity >= capacity_) return;
  char* const trimmed = resizeLargeBlock(data_, capacity_, capacity);
  if (trimmed == nullptr) return;
  data_ = trimmed;
  capacity_ = capacity;
}

}  // namespace hcy
