// SPDX-License-Identifier: Apache-2.0
//
// Arrays as std::mdspan.

#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <type_traits>
#include <utility>

namespace hcyclient {
namespace {

TEST(CppArrayMdspan, isColumnMajorAndShared) {
  Array matrix = Array::fromRows<double>({{1, 2, 3}, {4, 5, 6}});
  const auto view = asMdspan<double>(matrix);
  EXPECT_EQ(view.extent(0), 2U);
  EXPECT_EQ(view.extent(1), 3U);
  EXPECT_EQ((view[0, 2]), 3);
  view[1, 0] = 40;
  EXPECT_EQ(matrix.at<double>(1, 0), 40);
  static_assert(std::is_const_v<decltype(asMdspan<double>(std::as_const(matrix)))::element_type>);
  EXPECT_EQ((asMdspan<double>(std::as_const(matrix))[1, 0]), 40);
}

TEST(CppArrayMdspan, hasAsManyDimensionsAsAreAskedFor) {
  const Array cube({1, 2, 3, 4, 5, 6, 7, 8}, {2, 2, 2});
  EXPECT_EQ((asMdspan<int, 3>(cube)[1, 0, 1]), 6);
  EXPECT_THROW(asMdspan<int>(cube), UsageError);
  EXPECT_EQ((asMdspan<int, 4>(cube).extent(3)), 1U);
  const Array column({1, 2, 3});
  EXPECT_EQ((asMdspan<int, 1>(column)[2]), 3);
  const Array empty = Array::zeros<double>(0, 3);
  EXPECT_EQ(asMdspan<double>(empty).extent(1), 3U);
}

TEST(CppArrayMdspan, isOfFullArraysOfItsClass) {
  const Array sparse = Array::sparse<double>(2, 2, {});
  EXPECT_THROW(asMdspan<double>(sparse), UsageError);
  const Array number(1.0);
  EXPECT_THROW(asMdspan<int>(number), UsageError);
}

}  // namespace
}  // namespace hcyclient
