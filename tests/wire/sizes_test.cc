// SPDX-License-Identifier: Apache-2.0

#include <limits>
#include <typeinfo>

#include "support/array_messages.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"

namespace hcy {
namespace {

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

TEST(CheckedSize, IsTheValueUpToTheLimit) {
  EXPECT_EQ(checkedSize(0), 0);
  EXPECT_EQ(checkedSize(2147483647), 2147483647);
}

TEST(CheckedSize, OverflowsBeyondTheLimit) {
  for (const std::uint64_t value : {std::uint64_t{2147483648}, std::uint64_t{1} << 32, largest}) {
    try {
      checkedSize(value);
      ADD_FAILURE() << "nothing was thrown for " << value;
    } catch (const boost::numeric::positive_overflow& failure) {
      EXPECT_STREQ(failure.what(), "bad numeric conversion: positive overflow");
      EXPECT_NE(dynamic_cast<const std::bad_cast*>(&failure), nullptr);
    }
  }
}

TEST(SaturatingProduct, IsTheProductWhereItFits) {
  EXPECT_EQ(saturatingProduct(6, 7), 42U);
  EXPECT_EQ(saturatingProduct(0, largest), 0U);
  EXPECT_EQ(saturatingProduct(largest, 0), 0U);
  EXPECT_EQ(saturatingProduct(largest, 1), largest);
  EXPECT_EQ(saturatingProduct(largest / 2, 2), largest - 1);
}

TEST(SaturatingProduct, IsTheLargestWhereItDoesNot) {
  EXPECT_EQ(saturatingProduct(largest / 2 + 1, 2), largest);
  EXPECT_EQ(saturatingProduct(std::uint64_t{1} << 32, std::uint64_t{1} << 32), largest);
}

TEST(ElementCount, IsTheProductOfTheDimensions) {
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {}))), 0U);
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {5}))), 5U);
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {2, 3, 4}))), 24U);
}

TEST(ElementCount, IsZeroWithAnyZeroWhereverItStands) {
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {0, largest, largest}))),
            0U);
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {largest, largest, 0}))),
            0U);
}

TEST(ElementCount, DoesNotWrap) {
  const std::uint64_t half = std::uint64_t{1} << 32;
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {half, half}))), largest);
  EXPECT_EQ(elementCount(test::dataOf(test::arrayOf(VORTEN_Array::DOUBLE, {half, half, 2}))),
            largest);
}

}  // namespace
}  // namespace hcy
