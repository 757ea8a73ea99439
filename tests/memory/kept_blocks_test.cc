// SPDX-License-Identifier: Apache-2.0

#include "memory/kept_blocks.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "hcy/hcyclient.h"

namespace hcy {
namespace {

constexpr std::size_t kMebi = std::size_t{1} << 20;
// What the heap adds to a few blocks, of which it maps some in whole pages.
constexpr std::size_t kRoundedUp = kMebi / 8;

std::size_t allocatedBytes() {
  const struct mallinfo2 found = mallinfo2();
  return found.uordblks + found.hblkhd;
}

class KeptBlocks : public testing::Test {
 protected:
  void SetUp() override { releaseKeptBlocks(); }
  void TearDown() override { releaseKeptBlocks(); }
};

TEST_F(KeptBlocks, AreTakenForTheSameSize) {
  std::byte* const block = allocateBlock(kMebi);
  releaseBlock(block, kMebi);
  for (const std::size_t size : {kMebi - 8, kMebi + 8}) {
    std::byte* const other = allocateBlock(size);
    EXPECT_NE(other, block);
    std::free(other);
  }
  std::byte* const same = allocateBlock(kMebi);
  EXPECT_EQ(same, block);
  releaseBlock(same, kMebi);
}

TEST_F(KeptBlocks, AreCleared) {
  std::byte* const block = allocateBlock(kMebi);
  std::memset(block, 0xFF, kMebi);
  releaseBlock(block, kMebi);
  std::byte* const zeros = allocateZeros(kMebi);
  EXPECT_EQ(zeros, block);
  EXPECT_EQ(std::count(zeros, zeros + kMebi, std::byte{0}), kMebi);
  releaseBlock(zeros, kMebi);
}

TEST_F(KeptBlocks, AreOfSomeSizesOnly) {
  for (const std::size_t size : {kMebi / 8, kMebi, 2 * kMebi}) EXPECT_TRUE(isKept(size));
  EXPECT_FALSE(isKept(17));
  // The heap itself keeps blocks that are much smaller than these.
  for (const std::size_t size : {kMebi / 32, kMebi / 8 - 1, 2 * kMebi + 1, 31 * kMebi}) {
    EXPECT_FALSE(isKept(size));
    const std::size_t before = allocatedBytes();
    releaseBlock(allocateBlock(size), size);
    EXPECT_EQ(allocatedBytes(), before) << size;
  }
}

TEST_F(KeptBlocks, TakeNoMoreThanEightMebibytes) {
  const std::size_t before = allocatedBytes();
  std::vector<std::byte*> blocks(100);
  for (std::size_t i = 0; i < blocks.size(); ++i) blocks[i] = allocateBlock(2 * kMebi - i);
  for (std::size_t i = 0; i < blocks.size(); ++i) releaseBlock(blocks[i], 2 * kMebi - i);
  if (before == 0) GTEST_SKIP() << "AddressSanitizer has a heap of its own";
  EXPECT_GE(allocatedBytes() - before, 7 * kMebi);
  EXPECT_LE(allocatedBytes() - before, 8 * kMebi + kRoundedUp);
  releaseKeptBlocks();
  EXPECT_LE(allocatedBytes(), before + kRoundedUp);
}

TEST_F(KeptBlocks, OfSizesThatAreNotAskedForMakeRoom) {
  const std::size_t before = allocatedBytes();
  for (std::size_t i = 0; i < 4; ++i) releaseBlock(allocateBlock(kMebi + i), kMebi + i);
  releaseBlock(allocateBlock(kMebi / 2), kMebi / 2);
  if (before == 0) GTEST_SKIP() << "AddressSanitizer has a heap of its own";
  EXPECT_NEAR(static_cast<double>(allocatedBytes() - before), 3.5 * kMebi, kRoundedUp);
}

TEST_F(KeptBlocks, BelongToOneOwner) {
  const auto use = [](unsigned seed) {
    std::mt19937 random(seed);
    int broken = 0;
    for (int i = 0; i < 2000; ++i) {
      const std::size_t size = kMebi / 8 + random() % 3;
      std::byte* const block = allocateBlock(size);
      std::memset(block, static_cast<int>(seed), 64);
      std::this_thread::yield();
      broken += std::count(block, block + 64, static_cast<std::byte>(seed)) != 64;
      releaseBlock(block, size);
    }
    EXPECT_EQ(broken, 0);
  };
  std::vector<std::thread> threads;
  for (unsigned seed = 1; seed <= 8; ++seed) threads.emplace_back(use, seed);
  for (std::thread& thread : threads) thread.join();
}

TEST_F(KeptBlocks, AreReleasedWithTheLibrary) {
  ASSERT_NE(hcyInitialize(), nullptr);
  hcyDestroyArray(hcyCreateDoubleMatrix(kMebi / 8, 1, hcyREAL));
  const std::size_t before = allocatedBytes();
  hcyTerminate();
  if (before == 0) GTEST_SKIP() << "AddressSanitizer has a heap of its own";
  EXPECT_LE(allocatedBytes() + kMebi, before);
}

}  // namespace
}  // namespace hcy
