// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace hcy::bench {

// How many blocks of memory this thread has been given so far, by malloc and its kin, operator new
// included.
std::size_t allocationCount();

}  // namespace hcy::bench
