// SPDX-License-Identifier: Apache-2.0

#include "http/body_block.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace hcy {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Larger blocks are mapped; their capacity is a multiple of a huge page.
constexpr std::size_t kMostOnHeap = SpareBlock::kMostKept;

bool isMapped(std::size_t capacity) { return capacity > kMostOnHeap; }

// Begins where a huge page can; what is mapped before and behind it is given back.
char* mapped(std::size_t size) {
  void* const found =
      ::mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (found == MAP_FAILED) return nullptr;
  auto* const begin = static_cast<char*>(found);
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) % kHugePage;
  if (before != 0) ::munmap(begin, before);
  ::munmap(begin + before + size, kHugePage - before);
  ::madvise(begin + before, size, MADV_HUGEPAGE);  // all is the same without them, but slower
  return begin + before;
}

char* mappedAgain(char* block, std::size_t oldSize, std::size_t size) {
  void* const grown = ::mremap(block, oldSize, size, MREMAP_MAYMOVE);
  return grown == MAP_FAILED ? nullptr : static_cast<char*>(grown);
}

}  // namespace

BodyBlock::~BodyBlock() {
  if (isMapped(capacity_)) {
    ::munmap(data_, capacity_);
  } else {
    std::free(data_);
  }
}

bool BodyBlock::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return true;
  if (!isMapped(capacity)) {
    auto* const grown = static_cast<char*>(std::realloc(data_, capacity));
    if (grown == nullptr) return false;
    data_ = grown;
    capacity_ = capacity;
    return true;
  }
  if (capacity > SIZE_MAX - 2 * kHugePage) return false;
  const std::size_t size = (capacity + kHugePage - 1) / kHugePage * kHugePage;
  char* const grown = isMapped(capacity_) ? mappedAgain(data_, capacity_, size) : mapped(size);
  if (grown == nullptr) return false;
  if (!isMapped(capacity_) && data_ != nullptr) {
    std::memcpy(grown, data_, capacity_);
    std::free(data_);
  }
  data_ = grown;
  capacity_ = size;
  return true;
}

}  // namespace hcy
