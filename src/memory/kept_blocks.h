// SPDX-License-Identifier: Apache-2.0
//
// Blocks of the heap. Those of arrays of about a MiB are kept for the next array of the same size.
// The C library would return them to the system when an array and an output of its size are
// destroyed, and fetch cleared memory again in every call, which can take longer than the call. At
// most 8 MiB are kept for all threads together.

#pragma once

#include <cstddef>

namespace hcy {

// Smaller blocks stay on the heap anyway.
constexpr bool isKept(std::size_t size) {
  return size >= std::size_t{128} << 10 && size <= std::size_t{2} << 20;
}

// Whatever the block holds, or zeros. Null if memory runs out. std::realloc() may resize it.
std::byte* allocateBlock(std::size_t size);
std::byte* allocateZeros(std::size_t size);
void releaseBlock(std::byte* block, std::size_t size);

// Returns what is kept to the heap.
void releaseKeptBlocks();

}  // namespace hcy
