// SPDX-License-Identifier: Apache-2.0
//
// Large blocks from the heap, for systems other than Linux.

#include <cstdint>
#include <cstdlib>

#include "memory/large_block.h"

namespace hcy {

char* mapLargeBlock(std::size_t size) {
  return size > PTRDIFF_MAX ? nullptr : static_cast<char*>(std::malloc(size));
}

char* resizeLargeBlock(char* block, std::size_t /*oldSize*/, std::size_t size) {
  return size > PTRDIFF_MAX ? nullptr : static_cast<char*>(std::realloc(block, size));
}

void unmapLargeBlock(char* block, std::size_t /*size*/) { std::free(block); }

}  // namespace hcy
