// SPDX-License-Identifier: Apache-2.0

#include "wire/packed_varints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

#include "wire/ascii_runs.h"
#include "wire/varint.h"
#include "wire/varint_ends.h"

namespace hcy {
namespace {

using google::protobuf::RepeatedField;
using Buffer = std::vector<std::uint8_t>;

// A varint of so many bytes, at least as many as the value needs: the rest says nothing.
void addVarint(std::uint64_t value, std::size_t length, Buffer& bytes) {
  for (; length > 1; --length, value >>= 7)
    bytes.push_back(static_cast<std::uint8_t>(value | 0x80));
  bytes.push_back(static_cast<std::uint8_t>(value & 0x7F));
}

// Values of every length, each written in a form of every length, in random order.
Buffer manyVarints(std::mt19937_64& random, std::size_t count, std::size_t shortest = 1) {
  Buffer bytes;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t value = random() >> random() % 64;
    const std::size_t least = std::max(varintSize(value), shortest);
    addVarint(value, least + random() % (11 - least), bytes);
  }
  return bytes;
}

// One by one.
template <class Element>
std::vector<Element> elementsOf(Bytes packed, bool& isWhole) {
  std::vector<Element> elements;
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  while (position != end) {
    const std::uint64_t value = readVarint(position, end);
    if (position == nullptr) break;
    elements.push_back(std::is_same_v<Element, bool> ? static_cast<Element>(value != 0)
                                                     : static_cast<Element>(value));
  }
  isWhole = packed.empty() || position != nullptr;
  return elements;
}

template <class List>
class PackedVarints : public testing::Test {};

// A buffer as a list.
template <class Element>
struct Elements {
  using value_type = Element;
  ElementBuffer buffer;
  auto begin() const { return buffer.as<Element>().begin(); }
  auto end() const { return buffer.as<Element>().end(); }
};

template <class Element>
bool readInto(RepeatedField<Element>& list, Bytes packed) {
  return readPacked(packed, list);
}
template <class Element>
bool readInto(Elements<Element>& list, Bytes packed, std::uint64_t expected = 0) {
  return readPacked<Element>(packed, list.buffer, expected);
}

using Lists =
    testing::Types<RepeatedField<std::uint32_t>, RepeatedField<std::int32_t>,
                   RepeatedField<std::uint64_t>, RepeatedField<std::int64_t>, RepeatedField<bool>,
                   Elements<std::uint16_t>, Elements<std::int16_t>, Elements<char16_t>,
                   Elements<std::uint64_t>, Elements<std::int64_t>, Elements<bool>>;
TYPED_TEST_SUITE(PackedVarints, Lists);

// From memory of exactly that size, so that a read beyond its end is noticed.
template <class List>
void expectReadAsOneByOne(const Buffer& bytes) {
  using Element = typename List::value_type;
  const Buffer packed(bytes);
  bool isWhole = false;
  const std::vector<Element> expected = elementsOf<Element>(packed, isWhole);
  List list;
  EXPECT_EQ(readInto(list, packed), isWhole);
  EXPECT_TRUE(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
  // Whatever number was announced.
  if constexpr (requires { readInto(list, packed, expected.size()); }) {
    const std::size_t count = expected.size();
    for (const std::uint64_t announced :
         {count, count + 1, count / 2, count - 1, packed.size(), packed.size() + 1, SIZE_MAX}) {
      List announcedList;
      EXPECT_EQ(readInto(announcedList, packed, announced), isWhole);
      EXPECT_TRUE(std::ranges::equal(announcedList, expected));
    }
  }
}

TYPED_TEST(PackedVarints, AreReadAsOneByOne) {
  std::mt19937_64 random(1);
  for (std::size_t count = 0; count < 300; ++count) {
    expectReadAsOneByOne<TypeParam>(manyVarints(random, count));
  }
}

TYPED_TEST(PackedVarints, OfOneByteAreRead) {
  Buffer bytes(1000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i % 0x80);
  expectReadAsOneByOne<TypeParam>(bytes);
}

TYPED_TEST(PackedVarints, AreReadAroundALongerOne) {
  for (std::size_t before = 0; before < 130; ++before) {
    Buffer bytes(before, 1);
    addVarint(300, 2, bytes);
    bytes.resize(300, 1);
    expectReadAsOneByOne<TypeParam>(bytes);
  }
}

// Runs are written eight at a time, but not beyond the room that there is.
TYPED_TEST(PackedVarints, AreReadUpToTheLastOfABlock) {
  for (std::size_t twoBytes = 1; twoBytes < 9; ++twoBytes) {
    Buffer bytes;
    for (std::size_t i = 0; i < twoBytes; ++i) addVarint(300, 2, bytes);
    bytes.resize(kBlock, 1);
    addVarint(UINT64_MAX, kLongestVarint, bytes);
    expectReadAsOneByOne<TypeParam>(bytes);
  }
}

// One in so many is longer than a byte, as in text.
TYPED_TEST(PackedVarints, AreReadWhereMostAreOfOneByte) {
  std::mt19937_64 random(7);
  for (const std::uint64_t rarity : {2U, 4U, 8U, 20U, 60U}) {
    for (int round = 0; round < 40; ++round) {
      Buffer bytes;
      while (bytes.size() < 600) {
        const bool isLonger = random() % rarity == 0;
        addVarint(random() % 0x80, isLonger ? 2 + random() % 9 : 1, bytes);
      }
      expectReadAsOneByOne<TypeParam>(bytes);
      // There is room for those that end, and nothing behind it.
      Buffer cut(bytes);
      cut.resize(cut.size() + 30, 0x80);
      expectReadAsOneByOne<TypeParam>(cut);
      bytes.insert(bytes.begin() + static_cast<int>(random() % bytes.size()), 11, 0x80);
      expectReadAsOneByOne<TypeParam>(bytes);
    }
  }
}

TYPED_TEST(PackedVarints, AreReadUpToWhereTheyAreCut) {
  std::mt19937_64 random(2);
  const Buffer bytes = manyVarints(random, 40);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    expectReadAsOneByOne<TypeParam>(Buffer(bytes.begin(), bytes.begin() + static_cast<int>(size)));
  }
}

TYPED_TEST(PackedVarints, AreReadUpToOneThatIsTooLong) {
  std::mt19937_64 random(3);
  for (std::size_t before = 0; before < 60; ++before) {
    for (const std::size_t length : {11U, 12U, 70U, 200U}) {
      Buffer bytes = manyVarints(random, before, 9);
      bytes.resize(bytes.size() + length - 1, 0x80);
      bytes.push_back(1);
      const Buffer behind = manyVarints(random, 100);
      bytes.insert(bytes.end(), behind.begin(), behind.end());
      expectReadAsOneByOne<TypeParam>(bytes);
    }
  }
}

TYPED_TEST(PackedVarints, AreReadBehindWhatIsThere) {
  using Element = typename TypeParam::value_type;
  TypeParam list;
  const Buffer bytes = {1, 0};
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(readInto(list, bytes));
  const std::vector<Element> expected = {1, 0, 1, 0};
  EXPECT_TRUE(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
}

template <class Element>
class PackedElements : public testing::Test {};

using WrittenElements =
    testing::Types<std::uint16_t, std::int16_t, char16_t, std::uint64_t, std::int64_t>;
TYPED_TEST_SUITE(PackedElements, WrittenElements);

template <class Element>
void expectWrittenAsOneByOne(std::span<const Element> elements) {
  Buffer expected;
  for (const Element element : elements) {
    const auto value = static_cast<std::uint64_t>(static_cast<std::int64_t>(element));
    addVarint(value, varintSize(value), expected);
  }
  ASSERT_EQ(packedSize(elements), expected.size());
  const std::size_t size = expected.size();
  expected.resize(size + 16, 0xAA);
  Buffer written(expected.size(), 0xAA);
  EXPECT_EQ(writePacked(elements, written.data()), written.data() + size);
  EXPECT_EQ(written, expected);
}

TYPED_TEST(PackedElements, AreWrittenAsOneByOne) {
  std::vector<TypeParam> elements(1U << 16);
  std::iota(elements.begin(), elements.end(), TypeParam{});
  expectWrittenAsOneByOne<TypeParam>(elements);
  std::shuffle(elements.begin(), elements.end(), std::mt19937_64(4));
  expectWrittenAsOneByOne<TypeParam>(elements);
}

TYPED_TEST(PackedElements, OfAnyNumberAreWritten) {
  std::mt19937_64 random(5);
  for (std::size_t count = 0; count < 200; ++count) {
    std::vector<TypeParam> elements(count);
    for (TypeParam& element : elements) {
      element = static_cast<TypeParam>(random() >> random() % 64);
    }
    expectWrittenAsOneByOne<TypeParam>(elements);
  }
}

TYPED_TEST(PackedElements, ThatAreMostlyAsciiAreWritten) {
  std::mt19937_64 random(8);
  for (const std::uint64_t rarity : {2U, 4U, 8U, 20U, 60U}) {
    std::vector<TypeParam> elements(2000);
    for (TypeParam& element : elements) {
      element = static_cast<TypeParam>(random() % rarity == 0 ? random() : random() % 0x80);
    }
    expectWrittenAsOneByOne<TypeParam>(elements);
  }
}

// Where the next length begins.
TYPED_TEST(PackedElements, OfEveryLengthAreWritten) {
  std::vector<TypeParam> elements;
  for (int bits = 0; bits < 64; ++bits) {
    const std::uint64_t power = std::uint64_t{1} << bits;
    for (const std::uint64_t value : {power - 1, power, ~power, ~power + 1}) {
      elements.push_back(static_cast<TypeParam>(value));
    }
  }
  expectWrittenAsOneByOne<TypeParam>(elements);
}

TYPED_TEST(PackedElements, AtTheEndOfOneByteAreWritten) {
  for (const int last : {0x7F, 0x80}) {
    std::vector<TypeParam> elements(100);
    for (std::size_t i = 0; i < elements.size(); i += 3) elements[i] = static_cast<TypeParam>(last);
    expectWrittenAsOneByOne<TypeParam>(elements);
  }
}

TEST(VarintEnds, AreTheBytesWithoutTheHighestBit) {
  std::mt19937_64 random(6);
  for (int i = 0; i < 1000; ++i) {
    Buffer block(kBlock);
    std::uint64_t expected = 0;
    for (std::size_t k = 0; k < kBlock; ++k) {
      block[k] = static_cast<std::uint8_t>(random());
      expected |= std::uint64_t{block[k] < 0x80} << k;
    }
    EXPECT_EQ(varintEnds(block.data()), expected);
    EXPECT_EQ(varintEndsPortably(block.data()), expected);
  }
}

TEST(AsciiUnits, AreThoseBelow128) {
  std::mt19937_64 random(9);
  for (int i = 0; i < 1000; ++i) {
    std::u16string units(kUnits, 0);
    std::uint64_t expected = 0;
    for (std::size_t k = 0; k < kUnits; ++k) {
      units[k] = static_cast<char16_t>(random() >> random() % 64);
      expected |= std::uint64_t{units[k] < 0x80} << k;
    }
    EXPECT_EQ(asciiUnits(units.data()), expected);
    EXPECT_EQ(asciiUnitsPortably(units.data()), expected);
  }
}

}  // namespace
}  // namespace hcy
