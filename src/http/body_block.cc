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
    // A growing body takes many small steps: not a system call for each.
    if (capacity <= SIZE_MAX - kHugePage) capacity += kHugePage;
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

}  // namespace hcy
