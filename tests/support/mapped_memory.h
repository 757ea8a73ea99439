// SPDX-License-Identifier: Apache-2.0
//
// The memory that a process has mapped, used or not.

#pragma once

#include <unistd.h>

#include <cstddef>
#include <fstream>

namespace hcy::test {

inline std::size_t mappedBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t pages = 0;
  statm >> pages;
  return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace hcy::test
