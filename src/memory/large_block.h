// SPDX-License-Identifier: Apache-2.0
//
// Large blocks of memory have their own mappings, with huge pages if there are any: their first use
// costs less, and the process's heap and its settings are left alone.

#pragma once

#include <cstddef>

namespace hcy {

inline constexpr std::size_t kHugePage = std::size_t{2} << 20;

// The size is rounded up to whole pages. Null if memory runs out.
char* mapLargeBlock(std::size_t size);

// Moves the block if it has to. Null, and the block is unchanged, if memory runs out.
char* resizeLargeBlock(char* block, std::size_t oldSize, std::size_t size);

void unmapLargeBlock(char* block, std::size_t size);

}  // namespace hcy
