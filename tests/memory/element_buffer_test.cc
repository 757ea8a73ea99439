// SPDX-License-Identifier: Apache-2.0

#include "memory/element_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "support/mapped_memory.h"

namespace hcy {
namespace {

constexpr std::size_t kMapped = ElementBuffer::kLeastMapped;

// Sizes on either side of where a buffer moves.
constexpr std::size_t sizes[] = {
    0, 1, 8, 16, 17, 1000, 200'000, 1'000'000, kMapped - 1, kMapped, kMapped + 5001};

// The bytes that are looked at: all near a multiple of a MiB, and some of those between.
std::size_t next(std::size_t i) { return i % (std::size_t{1} << 20) < 5000 ? i + 1 : i + 997; }

void fill(ElementBuffer& buffer, std::size_t from = 0) {
  for (std::size_t i = 0; i < buffer.size(); i = next(i)) {
    if (i >= from) buffer.data()[i] = static_cast<std::byte>(i * 7 + 1);
  }
}

void expectFilled(const ElementBuffer& buffer, std::size_t count) {
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < count; i = next(i)) {
    wrong += buffer.data()[i] != static_cast<std::byte>(i * 7 + 1);
  }
  EXPECT_EQ(wrong, 0U);
}

void expectZeros(const ElementBuffer& buffer, std::size_t from) {
  const auto bytes = buffer.as<std::uint8_t>().subspan(from);
  if (bytes.empty()) return;
  EXPECT_EQ(bytes.front(), 0U);
  EXPECT_EQ(std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1), 0);
}

ElementBuffer filled(std::size_t size) {
  ElementBuffer buffer;
  buffer.resize(size);
  fill(buffer);
  return buffer;
}

TEST(ElementBuffer, OfAnySizeIsZeroAndHasNoMoreRoom) {
  for (const std::size_t size : sizes) {
    ElementBuffer buffer;
    buffer.resize(size);
    EXPECT_EQ(buffer.size(), size);
    EXPECT_EQ(buffer.capacity(), std::max<std::size_t>(size, 16));
    expectZeros(buffer, 0);
  }
}

TEST(ElementBuffer, KeepsWhatFitsAndAddsZeros) {
  for (const std::size_t before : sizes) {
    for (const std::size_t after : sizes) {
      SCOPED_TRACE(std::to_string(before) + " to " + std::to_string(after));
      ElementBuffer buffer = filled(before);
      buffer.resize(after);
      EXPECT_EQ(buffer.size(), after);
      expectFilled(buffer, std::min(before, after));
      expectZeros(buffer, std::min(before, after));
    }
  }
}

TEST(ElementBuffer, HasZerosWhereSomethingWasCutOff) {
  for (const std::size_t size : sizes) {
    ElementBuffer buffer = filled(size);
    buffer.resize(size / 2);
    buffer.resize(size);
    expectFilled(buffer, size / 2);
    expectZeros(buffer, size / 2);
  }
}

TEST(ElementBuffer, IsExtendedBehindWhatItHolds) {
  for (const std::size_t before : sizes) {
    for (const std::size_t added : sizes) {
      ElementBuffer buffer = filled(before);
      std::byte* const end = buffer.extend(added);
      EXPECT_EQ(end, buffer.data() + before);
      EXPECT_EQ(buffer.size(), before + added);
      fill(buffer, before);
      expectFilled(buffer, before + added);
    }
  }
}

TEST(ElementBuffer, ThatIsExtendedOneByOneGrowsByMore) {
  ElementBuffer buffer;
  std::size_t moves = 0;
  std::size_t capacity = buffer.capacity();
  for (std::size_t i = 0; i < 100'000; ++i) {
    *buffer.extend(1) = static_cast<std::byte>(i * 7 + 1);
    moves += std::exchange(capacity, buffer.capacity()) != buffer.capacity();
  }
  expectFilled(buffer, buffer.size());
  EXPECT_LT(moves, 30U);
}

TEST(ElementBuffer, IsCopiedAndMoved) {
  for (const std::size_t size : sizes) {
    ElementBuffer buffer = filled(size);
    const ElementBuffer copy = buffer.copy();
    ElementBuffer moved = std::move(buffer);
    EXPECT_TRUE(buffer.empty());  // NOLINT(bugprone-use-after-move)
    ElementBuffer& itself = moved;
    moved = std::move(itself);
    for (const ElementBuffer* const other : {&copy, &std::as_const(moved)}) {
      EXPECT_EQ(other->size(), size);
      expectFilled(*other, size);
    }
    ElementBuffer target = filled(100);
    target = std::move(moved);
    expectFilled(target, size);
  }
}

TEST(ElementBuffer, InsideOtherMemoryKeepsItAndLeavesItToGrow) {
  const auto block = std::make_shared<std::vector<std::byte>>(1000);
  {
    ElementBuffer buffer = ElementBuffer::inside(block, block->data() + 8, 100);
    EXPECT_EQ(buffer.data(), block->data() + 8);
    EXPECT_EQ(buffer.capacity(), 100U);
    EXPECT_EQ(block.use_count(), 2);
    fill(buffer);
    const ElementBuffer copy = buffer.copy();
    EXPECT_NE(copy.data(), buffer.data());
    ElementBuffer moved = std::move(buffer);
    EXPECT_EQ(moved.data(), block->data() + 8);
    EXPECT_EQ(block.use_count(), 2);
    moved.resize(50);
    EXPECT_EQ(moved.data(), block->data() + 8);
    moved.resize(200);
    EXPECT_EQ(block.use_count(), 1);
    expectFilled(moved, 50);
    EXPECT_EQ(moved.data()[50], std::byte{0});
    expectFilled(copy, 100);
    EXPECT_EQ((*block)[108], std::byte{0}) << "written behind the elements";
    moved = ElementBuffer::inside(block, block->data(), 10);
    EXPECT_EQ(block.use_count(), 2);
  }
  EXPECT_EQ(block.use_count(), 1);
}

TEST(ElementBuffer, GivesItsBlocksBack) {
  const std::size_t before = test::mappedBytes();
  for (const std::size_t size : {kMapped, 2 * kMapped}) {
    ElementBuffer buffer = filled(size);
    buffer.resize(size + kMapped);
    ElementBuffer other = filled(kMapped);
    other = std::move(buffer);
  }
  EXPECT_EQ(test::mappedBytes(), before);
}

TEST(ElementBuffer, IsAsItWasWhereMemoryCannotBeHad) {
  for (const std::size_t size : {std::size_t{16}, std::size_t{1000}, kMapped}) {
    ElementBuffer buffer = filled(size);
    constexpr std::size_t tooMuch = std::size_t{1} << 55;
    EXPECT_THROW(buffer.reserve(tooMuch), std::bad_alloc);
    EXPECT_THROW(buffer.resize(tooMuch), std::bad_alloc);
    EXPECT_THROW(buffer.extend(tooMuch), std::bad_alloc);
    EXPECT_EQ(buffer.size(), size);
    expectFilled(buffer, size);
  }
}

}  // namespace
}  // namespace hcy
