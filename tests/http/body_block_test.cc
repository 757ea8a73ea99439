// SPDX-License-Identifier: Apache-2.0

#include "http/body_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "http/http_response.h"
#include "support/mapped_memory.h"

namespace hcy {
namespace {

constexpr std::size_t kMostKept = std::size_t{4} << 20;

// Every size is filled to its end, so that a sanitizer or the kernel sees a block that is smaller.
void fill(BodyBlock& block, std::size_t from, std::size_t to, char value) {
  if (from < to) std::memset(block.data() + from, value, to - from);
}

TEST(BodyBlock, isEmptyAtFirst) {
  const BodyBlock block;
  EXPECT_EQ(block.data(), nullptr);
  EXPECT_EQ(block.capacity(), 0U);
}

TEST(BodyBlock, keepsWhatItHoldsWhileItGrows) {
  BodyBlock block;
  std::size_t filled = 0;
  for (const std::size_t size : {std::size_t{1}, std::size_t{1000}, kMostKept, kMostKept + 1,
                                 2 * kMostKept, 9 * kMostKept, 30 * kMostKept}) {
    ASSERT_TRUE(block.reserve(size));
    ASSERT_GE(block.capacity(), size);
    fill(block, filled, block.capacity(), 'x');
    filled = block.capacity();
    EXPECT_EQ(block.data()[0], 'x');
    EXPECT_EQ(std::memcmp(block.data(), block.data() + 1, filled - 1), 0) << size;
  }
}

TEST(BodyBlock, staysWhereItIsWithRoomEnough) {
  BodyBlock block;
  ASSERT_TRUE(block.reserve(100));
  const char* const data = block.data();
  EXPECT_TRUE(block.reserve(100));
  EXPECT_TRUE(block.reserve(1));
  EXPECT_EQ(block.data(), data);
  EXPECT_EQ(block.capacity(), 100U);
}

TEST(BodyBlock, thatIsLargeBeginsWhereAHugePageCan) {
#ifdef HCY_PORTABLE
  GTEST_SKIP() << "blocks are of the heap";
#endif
  BodyBlock block;
  ASSERT_TRUE(block.reserve(kMostKept + 1));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.data()) % (2 << 20), 0U);
}

TEST(BodyBlock, thatIsLargeDoesNotMoveForEachStep) {
  BodyBlock block;
  ASSERT_TRUE(block.reserve(10 * kMostKept));
  ASSERT_TRUE(block.reserve(block.capacity() + 1));
  EXPECT_GE(block.capacity(), 12 * kMostKept);
}

TEST(BodyBlock, thatIsLargeGivesItsMemoryBack) {
  constexpr std::size_t size = 16 * kMostKept;
  const std::size_t before = test::mappedBytes();
  for (int i = 0; i < 8; ++i) ASSERT_TRUE(BodyBlock().reserve(size));
  EXPECT_LT(test::mappedBytes(), before + 4 * size);
}

TEST(BodyBlock, thatCannotGrowStaysAsItIs) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{3}, kMostKept + 1}) {
    BodyBlock block;
    ASSERT_TRUE(block.reserve(size));
    const std::size_t capacity = block.capacity();
    fill(block, 0, capacity, 'x');
    for (const std::size_t most : {SIZE_MAX, SIZE_MAX - (4 << 20), SIZE_MAX / 2}) {
      EXPECT_FALSE(block.reserve(most));
    }
    EXPECT_EQ(block.capacity(), capacity);
    fill(block, 0, capacity, 'y');
  }
}

TEST(SpareBlock, isTakenOnce) {
  SpareBlock spare;
  BodyBlock block;
  ASSERT_TRUE(block.reserve(10));
  const char* const data = block.data();
  spare.giveBack(std::move(block));
  EXPECT_EQ(spare.take().data(), data);
  EXPECT_EQ(spare.take().data(), nullptr);
}

TEST(SpareBlock, isNoLargerThan4MiB) {
  SpareBlock spare;
  BodyBlock block;
  ASSERT_TRUE(block.reserve(kMostKept));
  spare.giveBack(std::move(block));
  EXPECT_EQ(spare.take().capacity(), kMostKept);
  BodyBlock larger;
  ASSERT_TRUE(larger.reserve(kMostKept + 1));
  spare.giveBack(std::move(larger));
  EXPECT_EQ(spare.take().capacity(), 0U);
}

TEST(BodyBlock, isTrimmedOnlyIfItStaysLarge) {
  constexpr std::size_t most = SpareBlock::kMostKept;
  BodyBlock block;
  ASSERT_TRUE(block.reserve(4 * most));
  std::fill_n(block.data(), 4 * most, 'x');
  block.trim(5 * most);
  EXPECT_EQ(block.capacity(), 4 * most);
  block.trim(most);
  EXPECT_EQ(block.capacity(), 4 * most);
  block.trim(most + 1);
  EXPECT_EQ(block.capacity(), most + 1);
  EXPECT_EQ(std::string(block.data(), most + 1), std::string(most + 1, 'x'));
}

// The memory of one body serves the next.
TEST(HttpResponse, takesItsMemoryFromTheSpareBlockAndGivesItBack) {
  const auto spare = std::make_shared<SpareBlock>();
  const char* data = nullptr;
  {
    HttpResponse response(100, spare);
    EXPECT_TRUE(response.appendBody("four", 4));
    data = response.bodyData();
  }
  HttpResponse response(100, spare);
  EXPECT_EQ(response.bodyData(), data);
  EXPECT_EQ(response.bodySize(), 0U);
  EXPECT_TRUE(response.appendBody("xy", 2));
  EXPECT_EQ(std::string(response.bodyData(), 2), "xy");
  HttpResponse another(100, spare);
  EXPECT_NE(another.bodyData(), response.bodyData());
}

TEST(HttpResponse, makesRoomForTheDeclaredLengthAtOnce) {
  const auto spare = std::make_shared<SpareBlock>();
  {
    HttpResponse response(100, spare);
    response.addHeaderLine("Content-Length: 90\r\n");
    EXPECT_TRUE(response.appendBody("a", 1));
  }
  EXPECT_EQ(spare->take().capacity(), 90U);
}

TEST(HttpResponse, givesBackWhatItDoesNotNeedOfMemoryThatItTakes) {
  BodyBlock memory;
  ASSERT_TRUE(memory.reserve(4 * kMostKept));
  HttpResponse response(std::numeric_limits<std::uint32_t>::max());
  response.addHeaderLine("Content-Length: " + std::to_string(2 * kMostKept) + "\r\n");
  const std::size_t mapped = test::mappedBytes();
  response.takeMemory(memory);
  EXPECT_EQ(test::mappedBytes(), mapped - 2 * kMostKept);
  EXPECT_EQ(memory.capacity(), 0U);
}

TEST(HttpResponse, takesMoreThanTheDeclaredLength) {
  HttpResponse response(100);
  response.addHeaderLine("Content-Length: 1\r\n");
  EXPECT_TRUE(response.appendBody("a", 1));
  EXPECT_TRUE(response.appendBody("b", 1));
  EXPECT_EQ(std::string(response.bodyData(), response.bodySize()), "ab");
}

}  // namespace
}  // namespace hcy
