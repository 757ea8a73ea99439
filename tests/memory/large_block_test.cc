// SPDX-License-Identifier: Apache-2.0

#include "memory/large_block.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/mapped_memory.h"

namespace hcy {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

// Sizes on either side of whole pages.
constexpr std::size_t sizes[] = {8 * kMiB, 8 * kMiB + 1, 9 * kMiB - 1, 9 * kMiB};

// A block is memory mapped for it alone, and not of the heap.
class MappedBlock : public testing::Test {
 protected:
  void SetUp() override {
#ifdef HCY_PORTABLE
    GTEST_SKIP() << "blocks are of the heap";
#endif
  }
};

TEST_F(MappedBlock, BeginsWhereAHugePageCan) {
  for (const std::size_t size : sizes) {
    char* const block = mapLargeBlock(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % (2 * kMiB), 0U);
    std::memset(block, 'x', size);
    unmapLargeBlock(block, size);
  }
}

TEST_F(MappedBlock, TakesNoMoreThanItsPages) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  for (const std::size_t size : sizes) {
    const std::size_t before = test::mappedBytes();
    char* const block = mapLargeBlock(size);
    EXPECT_LT(test::mappedBytes() - before, size + page);
    unmapLargeBlock(block, size);
    EXPECT_EQ(test::mappedBytes(), before);
  }
}

TEST(LargeBlock, KeepsWhatItHoldsWhenItIsResized) {
  std::size_t size = 8 * kMiB + 1;
  char* block = mapLargeBlock(size);
  ASSERT_NE(block, nullptr);
  std::memset(block, 'x', size);
  for (const std::size_t next : {64 * kMiB + 1, 9 * kMiB - 1}) {
    block = resizeLargeBlock(block, size, next);
    ASSERT_NE(block, nullptr);
    size = next;
    block[size - 1] = 'x';
    EXPECT_EQ(block[0], 'x');
    EXPECT_EQ(std::memcmp(block, block + 1, 8 * kMiB), 0);
  }
  unmapLargeBlock(block, size);
}

TEST_F(MappedBlock, IsReleasedAfterItWasResized) {
  const std::size_t before = test::mappedBytes();
  char* const block = mapLargeBlock(8 * kMiB + 1);
  ASSERT_NE(block, nullptr);
  char* const resized = resizeLargeBlock(block, 8 * kMiB + 1, 64 * kMiB + 1);
  ASSERT_NE(resized, nullptr);
  unmapLargeBlock(resized, 64 * kMiB + 1);
  EXPECT_EQ(test::mappedBytes(), before);
}

TEST(LargeBlock, ThatMemoryCannotBeHadForIsNull) {
  char* const block = mapLargeBlock(8 * kMiB);
  for (const std::size_t size : {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - 4 * kMiB, SIZE_MAX / 2}) {
    EXPECT_EQ(mapLargeBlock(size), nullptr);
    EXPECT_EQ(resizeLargeBlock(block, 8 * kMiB, size), nullptr);
  }
  std::memset(block, 'x', 8 * kMiB);
  unmapLargeBlock(block, 8 * kMiB);
}

// The flags that the kernel gives for the mapping that an address lies in.
std::string flagsOf(const char* address) {
  const auto wanted = reinterpret_cast<std::uintptr_t>(address);
  std::ifstream maps("/proc/self/smaps");
  bool isHere = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) {
      isHere = begin <= wanted && wanted < end;
    }
    if (isHere && line.starts_with("VmFlags:")) return line + ' ';
  }
  return "";
}

TEST_F(MappedBlock, AsksForHugePages) {
  if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage")) {
    GTEST_SKIP() << "this kernel has none";
  }
  char* const block = mapLargeBlock(8 * kMiB);
  ASSERT_NE(block, nullptr);
  EXPECT_NE(flagsOf(block).find(" hg "), std::string::npos) << flagsOf(block);
  unmapLargeBlock(block, 8 * kMiB);
}

}  // namespace
}  // namespace hcy
