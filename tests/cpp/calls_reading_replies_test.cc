// SPDX-License-Identifier: Apache-2.0
//
// Readers and printing on what only a reply holds: one dimension, too many of them, missing
// elements.

#include <gtest/gtest.h>

#include <hcy/hcyclient_eigen.hpp>
#include <string>
#include <vector>

#include "reply_arrays.h"

namespace hcyclient::test {
namespace {

TEST(CppReplies, mayHaveOneDimension) {
  const Array numbers = received(twos({3}, 3));
  EXPECT_EQ(format(numbers), "double 3-by-1\n  2\n  2\n  2");
  EXPECT_EQ(numbers.at<double>(2), 2);
  EXPECT_EQ(numbers.index({2}), 2U);
  EXPECT_THROW(numbers.at<double>(2, 0), UsageError);
  EXPECT_EQ(format(received(cellOf(1, {twos({1}, 1)}))),
            "cell 1-by-1\n  (0, 0): double 1-by-1 = 2");
  const Array text = received(arrayOf(hcyCHAR_CLASS, {2}, kChar, bytesField(1, "ab")));
  EXPECT_EQ(format(text), "char 2-by-1\n  \"a\"\n  \"b\"");
  const Array cell = received(arrayOf(hcyCELL_CLASS, {1}, kCell, bytesField(1, twos({1}, 1))));
  EXPECT_EQ(format(cell), "cell 1-by-1\n  (0, 0): double 1-by-1 = 2");
}

TEST(CppReplies, haveNoSparseArraysOfThreeDimensions) {
  const std::string array =
      sparseOf({2, 2, 2}, std::string("\1", 1), std::string("\0\0\1", 3), bytesField(1, kTwo));
  EXPECT_NE(incompleteness([&] { received(array); }), "");
  // A program may make one.
  Array made = Array::sparse<double>(2, 2, {{1, 1, 2.0}});
  made.resize({2, 2, 2});
  EXPECT_EQ(made.at<double>(1, 1, 0), 2);
  EXPECT_EQ(made.at<double>(1, 1, 1), 0);
  EXPECT_EQ(made.at<double>(7), 0);
  EXPECT_THROW(asSparseEigen<double>(made), UsageError);
}

TEST(CppReplies, areNotReadWhereElementsAreMissing) {
  for (const Array& array : {adopted(twos({3, 1}, 2)), adopted(cellOf(2, {twos({3, 1}, 2)}))}) {
    EXPECT_NE(incompleteness([&] { static_cast<void>(array == array); }), "");
    EXPECT_NE(incompleteness([&] { format(array); }), "");
  }
  const Array numbers = adopted(twos({3, 1}, 2));
  EXPECT_NE(incompleteness([&] { numbers.at<double>(0); }), "");
  EXPECT_NE(incompleteness([&] { numbers.toVector<int>(); }), "");
  EXPECT_NE(incompleteness([&] { numbers.convertTo<int>(); }), "");
  EXPECT_NE(incompleteness([&] { asEigen<double>(numbers); }), "");
  EXPECT_NE(incompleteness([&] { toEigen<Eigen::VectorXi>(numbers); }), "");
  const Array one = adopted(twos({1, 1}, 0));
  EXPECT_NE(incompleteness([&] { one.scalar<int>(); }), "");
  EXPECT_NE(incompleteness([&] { one.value_or(1); }), "");
  const Array fields = adopted(structOf(1, {"a", "b"}, {twos({1}, 1)}));
  EXPECT_NE(incompleteness([&] {
              for (auto [name, value] : fields.fields()) EXPECT_EQ(name, "a");
            }),
            "");
  EXPECT_NE(incompleteness([&] { fields.value_or("b", 1.0); }), "");
  const Array cell = adopted(cellOf(2, {twos({1}, 1)}));
  EXPECT_NE(incompleteness([&] {
              for (const Array& element : cell) EXPECT_EQ(element.scalar(), 2);
            }),
            "");
}

TEST(CppReplies, nameTheUrlWhereAnOutputIsIncomplete) {
  const ReplyingServer server({twos({3, 1}, 2)});
  const Library library;
  Context context{Config(library)};
  const std::string url = server.url();
  try {
    context.call("http://a:b@" + url.substr(7));
    FAIL();
  } catch (const IncompleteReply& error) {
    EXPECT_EQ(error.url(), url);
    EXPECT_EQ(IncompleteReply("").url(), "");
  }
}

}  // namespace
}  // namespace hcyclient::test
