// SPDX-License-Identifier: Apache-2.0
//
// How many blocks of memory the program holds, the libraries that it loads included.

#pragma once

namespace hcy::test {

// Those that this thread has allocated and not freed; none that it did not count gives 0.
long blocksHeld();

// Whether they are counted: sanitizers bring an allocator of their own, and count for themselves.
bool countsBlocks();

}  // namespace hcy::test
