// SPDX-License-Identifier: Apache-2.0

#include "message_memory.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <new>

namespace hcy::server {

Budget& messageMemory() {
  static Budget memory(std::numeric_limits<std::size_t>::max());
  return memory;
}

std::size_t messageMemoryLimitFor(std::uint64_t maxBody) {
  const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
  const auto pageSize = static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 0L));
  constexpr std::uint64_t always = std::uint64_t{64} << 20;
  return std::max(always, std::min(8 * maxBody + always, pages * pageSize / 2));
}

void MessageMemoryShare::count(std::size_t bytes) { countTo(counted_ + bytes); }

void MessageMemoryShare::countTo(std::size_t bytes) {
  if (bytes > kUncountedMemory && !share_.growTo(bytes - kUncountedMemory)) throw std::bad_alloc();
  counted_ = std::max(counted_, bytes);
}

}  // namespace hcy::server
