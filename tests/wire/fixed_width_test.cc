// SPDX-License-Identifier: Apache-2.0
//
// Elements of fixed width between memory and body.

#include "wire/fixed_width.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace hcy {
namespace {

using Octets = std::vector<std::uint8_t>;

TEST(FixedWidth, ReversesTheBytesOfEachElement) {
  const Octets bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  Octets copy(8);
  copyReversed<4>(bytes, copy.data());
  EXPECT_EQ(copy, (Octets{4, 3, 2, 1, 8, 7, 6, 5}));
  copyReversed<8>(bytes, copy.data());
  EXPECT_EQ(copy, (Octets{8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(FixedWidth, ReversesNothingOfNoElements) {
  std::uint8_t untouched = 7;
  copyReversed<8>({}, &untouched);
  EXPECT_EQ(untouched, 7);
}

TEST(FixedWidth, TravelsWithTheLowestByteFirst) {
  const std::array<double, 2> elements = {1.0, -2.0};
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(elements.data()), sizeof elements);
  Octets sent(sizeof elements);
  EXPECT_EQ(copyFixedWidth<double>(bytes, sent.data()), sent.data() + sent.size());
  EXPECT_EQ(sent, (Octets{0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0xC0}));

  std::array<double, 2> received{};
  copyFixedWidth<double>(sent, reinterpret_cast<std::uint8_t*>(received.data()));
  EXPECT_EQ(received, elements);
}

TEST(FixedWidth, CopiesNoElements) {
  std::uint8_t untouched = 7;
  EXPECT_EQ(copyFixedWidth<float>({}, &untouched), &untouched);
  EXPECT_EQ(untouched, 7);
}

}  // namespace
}  // namespace hcy
