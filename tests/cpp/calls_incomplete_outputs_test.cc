// SPDX-License-Identifier: Apache-2.0
//
// Outputs that hold less than their dimensions say: a call does not hand them out, and an array
// that was adopted does not let them be read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <complex>
#include <cstdio>
#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

#include "reply_arrays.h"

namespace hcyclient {
namespace {

using namespace hcyclient::test;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kCut =
    "; the response size limit (Config::setResponseSizeLimit) may have cut the reply";

const std::string kNoValues = bytesField(1, "");
const std::string kNarrow = arrayOf(hcyINT16_CLASS, {2, 1}, kInt16, bytesField(1, "\x05"));
const std::string kText = arrayOf(hcyCHAR_CLASS, {1, 3}, kChar, bytesField(1, "a"));
const std::string kFlags = arrayOf(hcyLOGICAL_CLASS, {1, 3}, kLogical, bytesField(1, "\1"));
const std::string kHalfComplex =
    arrayOf(hcyDOUBLE_CLASS, {2, 1}, kDouble, bytesField(1, kTwo + kTwo) + bytesField(2, kTwo));
const std::string kNoDimensions = numberField(1, hcyDOUBLE_CLASS);
const std::string kNoStarts = sparseOf({6, 2}, std::string("\0\5", 2), "", bytesField(1, kTwo));
const std::string kRowOutside =
    sparseOf({5, 1}, std::string("\0\5", 2), std::string("\0\2", 2), bytesField(1, kTwo + kTwo));
const std::string kFewValues =
    sparseOf({6, 1}, std::string("\0\5", 2), std::string("\0\2", 2), bytesField(1, kTwo));
const std::string kFewImaginary = sparseOf({6, 1}, std::string("\0\5", 2), std::string("\0\2", 2),
                                           bytesField(1, kTwo + kTwo) + bytesField(2, kTwo));

TEST(CppIncompleteOutput, isNamedByItsNumber) {
  const ReplyingServer server({twos({1, 1}, 1), twos({2, 3}, 5), twos({2, 2}, 0)});
  const Library library;
  Context context(Config(library).setResponseSizeLimit(12345));
  EXPECT_EQ(incompleteness([&] { context.feval(server.url(), {}, 3); }),
            "output 1 (counted from 0) is incomplete: its dimensions require 6 elements, but fewer "
            "arrived; the response size limit (Config::setResponseSizeLimit, here 12345 bytes) may "
            "have cut the reply");
}

// A reply that declares no length is received as far as the limit.
TEST(CppIncompleteOutput, comesOfTheSizeLimit) {
  const std::string body = hcy::test::resultOf({twos({1, 1}, 1), twos({1000, 1}, 1000)});
  char size[20];
  std::snprintf(size, sizeof size, "%zx\r\n", body.size());
  const hcy::test::ScriptServer server({hcy::test::Connection{hcy::test::replyToEach(
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + (size + body) + "\r\n0\r\n\r\n")}});
  const Library library;
  Config config(library);
  EXPECT_EQ(Context(config).feval(server.url(), {}, 2)[1].toVector<double>().size(), 1000U);
  config.setResponseSizeLimit(4000);
  EXPECT_THAT(incompleteness([&] { Context(config).feval(server.url(), {}, 2); }),
              StartsWith("output 1 (counted from 0) is incomplete"));
}

TEST(CppIncompleteOutput, isNotHandedOutWhateverItsClass) {
  for (const std::string& array :
       {twos({1, 1}, 0), kNarrow, kText, kFlags, kHalfComplex, kNoDimensions, kNoStarts,
        kRowOutside, kFewValues, kFewImaginary}) {
    EXPECT_THAT(incompleteness([&] { received(array); }), StartsWith("output 0"))
        << ::testing::PrintToString(array);
  }
  EXPECT_THAT(incompleteness([&] { received(kNoDimensions); }),
              HasSubstr("its dimensions did not arrive"));
  EXPECT_THAT(incompleteness([&] { received(kNoStarts); }),
              HasSubstr("row indices and values do not describe a sparse array of 6-by-2"));
}

TEST(CppIncompleteOutput, mayBeAsLargeAsItSays) {
  EXPECT_THAT(incompleteness([&] {
                received(twos({1U << 31U, 1U << 31U}, 1));
              }),
              HasSubstr("4611686018427387904 elements"));
}

TEST(CppIncompleteOutput, isNoneThatHasAllItsElements) {
  EXPECT_EQ(received(twos({2, 1}, 2)).toVector<double>(), (std::vector<double>{2, 2}));
  EXPECT_EQ(received(twos({0, 5}, 0)).columns(), 5U);
  EXPECT_EQ(received(twos({2}, 2)).size(), 2U);
  EXPECT_EQ(received(arrayOf(hcyCHAR_CLASS, {0, 0}, kChar, "")).toString(), "");
  EXPECT_EQ(received(structOf(3, {}, {})).size(), 3U);
  const Array empty = received(sparseOf({3, 2}, "", std::string("\0\0\0", 3), kNoValues));
  EXPECT_TRUE(empty.entries<double>().empty());
}

// Its values cannot be reached, whether they arrived or not.
TEST(CppIncompleteOutput, isNoSparseArrayOfSinglePrecision) {
  const Array array = received(arrayOf(kSparseType, {6, 1}, kSparse,
                                       numberField(1, 2) + bytesField(2, std::string("\0\5", 2)) +
                                           bytesField(3, std::string("\0\2", 2)) +
                                           bytesField(18, bytesField(1, std::string(8, '\1')))));
  EXPECT_EQ(array.className(), "logical");
  EXPECT_TRUE(array.span<bool>().empty());
  EXPECT_EQ(array.rowIndices().size(), 2U);
  EXPECT_THROW(array.entries<bool>(), UsageError);
}

TEST(CppIncompleteOutput, leavesTheContextAsItWas) {
  const ReplyingServer broken({twos({2, 1}, 1)}), whole({twos({2, 1}, 2)});
  const Library library;
  Context context{Config(library)};
  EXPECT_THROW(context.feval(broken.url()), IncompleteReply);
  EXPECT_EQ(context.feval(whole.url())[0].scalar(), 2);
}

TEST(CppIncompleteArray, isNotRead) {
  Array array = adopted(twos({2, 3}, 5));
  const Array& seen = array;
  const std::string text =
      "the array is incomplete: its dimensions require 6 elements, but fewer arrived" + kCut;
  EXPECT_EQ(incompleteness([&] { array.span<double>(); }), text);
  EXPECT_EQ(incompleteness([&] { seen.span<double>(); }), text);
  EXPECT_EQ(incompleteness([&] { array.toVector<double>(); }), text);
  EXPECT_EQ(incompleteness([&] { array.imaginary<double>(); }), text);
  EXPECT_EQ(incompleteness([&] { array.scalar(); }), text);
  EXPECT_EQ(incompleteness([&] { array.resize({2, 4}); }), text);
  EXPECT_EQ(array.shape(), (Shape{2, 3}));
  EXPECT_EQ(array.className(), "double");
  EXPECT_EQ(hcyGetPr(array.get()), nullptr);  // nothing has been made up
}

TEST(CppIncompleteArray, isNotReadWhateverItsClass) {
  EXPECT_THROW(adopted(kNarrow).toVector<std::int16_t>(), IncompleteReply);
  EXPECT_THROW(adopted(kText).toString(), IncompleteReply);
  EXPECT_THROW(adopted(kFlags).toVector<bool>(), IncompleteReply);
  EXPECT_THROW(adopted(kFlags).scalar(), IncompleteReply);
  EXPECT_THROW(adopted(kHalfComplex).toVector<std::complex<double>>(), IncompleteReply);
  EXPECT_THROW(adopted(kHalfComplex).toVector<double>(), IncompleteReply);
  const Array shapeless = adopted(kNoDimensions);
  EXPECT_THROW(shapeless.span<double>(), IncompleteReply);
  EXPECT_THROW(shapeless.scalar(), IncompleteReply);
  EXPECT_TRUE(shapeless.shape().empty());
}

TEST(CppIncompleteArray, isNotReadWhereItIsSparse) {
  for (const std::string& bytes : {kNoStarts, kRowOutside, kFewValues, kFewImaginary}) {
    Array array = adopted(bytes);
    const Array& seen = array;
    EXPECT_THROW(array.span<double>(), IncompleteReply);
    EXPECT_THROW(seen.span<double>(), IncompleteReply);
    EXPECT_THROW(array.rowIndices(), IncompleteReply);
    EXPECT_THROW(seen.rowIndices(), IncompleteReply);
    EXPECT_THROW(array.columnStarts(), IncompleteReply);
    EXPECT_THROW(array.entries<double>(), IncompleteReply);
    EXPECT_THROW(array.scalar(), IncompleteReply);
  }
}

// Behind the elements that are stored, lists may differ in length.
TEST(CppSparseOutput, hasOneLengthForAllItsLists) {
  const std::string rows("\0\5\1\1", 4), starts("\0\2", 2);
  Array array = received(sparseOf({6, 1}, rows, starts, bytesField(1, kTwo + kTwo)));
  const Array& seen = array;
  EXPECT_EQ(seen.span<double>().size(), 2U);
  EXPECT_EQ(seen.rowIndices().size(), 2U);
  EXPECT_EQ(seen.toVector<double>(), (std::vector<double>{2, 2}));
  EXPECT_EQ(seen.entries<double>().size(), 2U);
  const Span<double> room = array.span<double>();
  ASSERT_EQ(room.size(), 2U) << "there are no values for the other rows";
  for (double& value : room) value = 3;
  EXPECT_EQ(array.rowIndices().size(), 2U);
  EXPECT_EQ(seen.toVector<double>(), (std::vector<double>{3, 3}));

  Array small = received(sparseOf({1, 1}, rows, std::string("\0\1", 2), bytesField(1, kTwo)));
  EXPECT_EQ(small.span<double>().size(), 1U);
  EXPECT_EQ(small.rowIndices().size(), 1U);
}

}  // namespace
}  // namespace hcyclient
