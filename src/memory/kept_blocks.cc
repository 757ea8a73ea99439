// SPDX-License-Identifier: Apache-2.0

#include "memory/kept_blocks.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/asan_interface.h>
#endif
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>

// So that AddressSanitizer reports who uses a block that is kept.
#ifndef ASAN_POISON_MEMORY_REGION
#define ASAN_POISON_MEMORY_REGION(begin, size)
#define ASAN_UNPOISON_MEMORY_REGION(begin, size)
#endif

namespace hcy {
namespace {

// Each block begins with its size. There is no lock, which a fork could leave locked for ever.
class KeptBlocks {
 public:
  std::byte* take(std::size_t size) {
    for (Place& place : places_) {
      std::byte* const block = place.exchange(nullptr);
      if (block == nullptr) continue;
      if (sizeOf(block) == size) {
        ASAN_UNPOISON_MEMORY_REGION(block, size);
        return block;
      }
      if (!put(block, place)) std::free(block);
    }
    return nullptr;
  }

  void keep(std::byte* block, std::size_t size) {
    std::memcpy(block, &size, sizeof size);
    ASAN_POISON_MEMORY_REGION(block + sizeof size, size - sizeof size);
    const auto takesIt = [&](Place& place) { return put(block, place); };
    if (std::any_of(places_.begin(), places_.end(), takesIt)) return;
    std::free(places_[next_++ % places_.size()].exchange(block));
  }

  void release() {
    for (Place& place : places_) std::free(place.exchange(nullptr));
  }

 private:
  using Place = std::atomic<std::byte*>;

  static std::size_t sizeOf(const std::byte* block) {
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    return size;
  }

  static bool put(std::byte* block, Place& place) {
    std::byte* none = nullptr;
    return place.compare_exchange_strong(none, block);
  }

  std::array<Place, 4> places_ = {};
  std::atomic<unsigned> next_ = 0;
};

constinit KeptBlocks kept;

}  // namespace

std::byte* allocateBlock(std::size_t size) {
  std::byte* const block = isKept(size) ? kept.take(size) : nullptr;
  return block != nullptr ? block : static_cast<std::byte*>(std::malloc(size));
}

std::byte* allocateZeros(std::size_t size) {
  std::byte* const block = isKept(size) ? kept.take(size) : nullptr;
  if (block == nullptr) return static_cast<std::byte*>(std::calloc(1, size));
  std::memset(block, 0, size);
  return block;
}

void releaseBlock(std::byte* block, std::size_t size) {
  if (isKept(size)) {
    kept.keep(block, size);
  } else {
    std::free(block);
  }
}

void releaseKeptBlocks() { kept.release(); }

}  // namespace hcy
