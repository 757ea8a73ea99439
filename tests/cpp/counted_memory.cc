// SPDX-License-Identifier: Apache-2.0

#include "cpp/counted_memory.h"

#include <cstddef>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define HCY_COUNTS_BLOCKS
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#undef HCY_COUNTS_BLOCKS
#endif
#endif

namespace {

thread_local long held = 0;

}  // namespace

namespace hcy::test {

long blocksHeld() { return held; }

bool countsBlocks() {
#ifdef HCY_COUNTS_BLOCKS
  return true;
#else
  return false;
#endif
}

}  // namespace hcy::test

#ifdef HCY_COUNTS_BLOCKS

// Before those of the C library for the whole program. NOLINTBEGIN: the names are the library's.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  void* const block = __libc_malloc(size);
  held += block != nullptr ? 1 : 0;
  return block;
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  void* const block = __libc_calloc(count, size);
  held += block != nullptr ? 1 : 0;
  return block;
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
  void* const moved = __libc_realloc(block, size);
  if (block == nullptr && moved != nullptr) ++held;
  if (block != nullptr && size == 0) --held;
  return moved;
}

__attribute__((visibility("default"))) void free(void* block) {
  held -= block != nullptr ? 1 : 0;
  __libc_free(block);
}

}  // extern "C"
// NOLINTEND

#endif
