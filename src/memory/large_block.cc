// SPDX-License-Identifier: Apache-2.0

#include "memory/large_block.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace hcy {
namespace {

std::size_t pageSize() {
  static const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t wholePages(std::size_t size) {
  return (size + pageSize() - 1) / pageSize() * pageSize();
}

}  // namespace

char* mapLargeBlock(std::size_t size) {
  if (size > SIZE_MAX - 2 * kHugePage) return nullptr;
  size = wholePages(size);
  void* const found =
      ::mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (found == MAP_FAILED) return nullptr;
  // The block begins where a huge page can; what lies before and after it is released.
  auto* const begin = static_cast<char*>(found);
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) % kHugePage;
  if (before != 0) ::munmap(begin, before);
  ::munmap(begin + before + size, kHugePage - before);
  ::madvise(begin + before, size, MADV_HUGEPAGE);  // all is the same without them, but slower
  return begin + before;
}

char* resizeLargeBlock(char* block, std::size_t oldSize, std::size_t size) {
  if (size > SIZE_MAX - pageSize()) return nullptr;
  void* const resized = ::mremap(block, wholePages(oldSize), wholePages(size), MREMAP_MAYMOVE);
  return resized == MAP_FAILED ? nullptr : static_cast<char*>(resized);
}

void unmapLargeBlock(char* block, std::size_t size) { ::munmap(block, wholePages(size)); }

}  // namespace hcy
