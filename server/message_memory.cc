// SPDX-License-Identifier: Apache-2.0

#include "message_memory.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

namespace hcy::server {
namespace {

std::atomic<std::size_t> memoryLimit{std::numeric_limits<std::size_t>::max()};
std::atomic<std::size_t> memoryInUse{0};

void* allocateBlock(std::size_t size) {
  std::size_t inUse = memoryInUse;
  do {
    if (size > memoryLimit - inUse) throw std::bad_alloc();
  } while (!memoryInUse.compare_exchange_weak(inUse, inUse + size));
  try {
    return ::operator new(size);
  } catch (...) {
    memoryInUse -= size;
    throw;
  }
}

void releaseBlock(void* block, std::size_t size) {
  ::operator delete(block);
  memoryInUse -= size;
}

}  // namespace

void setMessageMemoryLimit(std::size_t bytes) { memoryLimit = bytes; }

std::size_t messageMemoryLimitFor(std::uint64_t maxBody) {
  const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
  const auto pageSize = static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 0L));
  constexpr std::uint64_t always = std::uint64_t{64} << 20;
  return std::max(always, std::min(4 * maxBody + always, pages * pageSize / 2));
}

google::protobuf::ArenaOptions boundedArena() {
  google::protobuf::ArenaOptions options;
  options.start_block_size = std::size_t{4} << 10;
  options.max_block_size = std::size_t{1} << 20;
  options.block_alloc = allocateBlock;
  options.block_dealloc = releaseBlock;
  return options;
}

}  // namespace hcy::server
