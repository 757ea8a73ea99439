// SPDX-License-Identifier: Apache-2.0

#include "message_memory.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <new>

namespace hcy::server {
namespace {

void* allocateBlock(std::size_t size) {
  if (!messageMemory().take(size)) throw std::bad_alloc();
  try {
    return ::operator new(size);
  } catch (...) {
    messageMemory().giveBack(size);
    throw;
  }
}

void releaseBlock(void* block, std::size_t size) {
  ::operator delete(block);
  messageMemory().giveBack(size);
}

google::protobuf::ArenaOptions arenaOptions(char* firstBlock) {
  google::protobuf::ArenaOptions options;
  options.initial_block = firstBlock;
  options.initial_block_size = kUncountedMemory;
  options.max_block_size = std::size_t{1} << 20;
  options.block_alloc = allocateBlock;
  options.block_dealloc = releaseBlock;
  return options;
}

}  // namespace

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

BoundedArena::BoundedArena()
    : firstBlock_(std::make_unique_for_overwrite<char[]>(kUncountedMemory)),
      arena_(arenaOptions(firstBlock_.get())) {}

}  // namespace hcy::server
