// SPDX-License-Identifier: Apache-2.0
//
// Whatever an argument is, it is taken or refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "arguments/argument.h"
#include "notations/array_json.h"
#include "notations/csv.h"
#include "output/display.h"
#include "random_arrays.h"
#include "text/source_text.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

// What is wrong with it; empty if it was taken, and then it can be shown.
std::string refusalOf(const std::string& argument) {
  try {
    const auto arrays = tools::arraysFrom({argument});
    tools::toJson(arrays[0]);
    tools::display("x", arrays[0], {40});
    return "";
  } catch (const tools::BadInput& problem) {
    return problem.what();
  }
}

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(HostileArgument, nestedDeeperThanTheStackWouldBear) {
  for (const std::string open : {"[", "{\"a\":", "{\"$cell\":[", "[[1],"}) {
    EXPECT_THAT(refusalOf(repeated(open, 1000000)), HasSubstr("nested deeper than 256 levels"));
  }
  EXPECT_EQ(refusalOf(repeated("[", 256) + repeated("]", 256)), "");
  EXPECT_EQ(refusalOf(repeated("[", 255) + "\"a\"" + repeated("]", 255)), "");
  EXPECT_EQ(refusalOf(repeated("{\"a\":", 255) + "1" + repeated("}", 255)), "");
  EXPECT_THAT(refusalOf(repeated("int8:", 100000) + "1"), HasSubstr("too many classes"));
}

TEST(HostileArgument, sizesThatNothingCouldHold) {
  // Columns take memory even if nothing is written for them.
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":1,"cols":16777217,"entries":[]})"),
              HasSubstr("a sparse array can have at most 16777216 columns here"));
  EXPECT_THAT(refusalOf(R"(sparse:{"rows":99999999999999999999,"cols":1,"entries":[]})"),
              HasSubstr("must be between 0 and 2147483647"));
  EXPECT_THAT(refusalOf(R"({"$cell":[],"$shape":[2147483647,2147483647,2147483647]})"),
              HasSubstr("more elements than an array can have"));
  EXPECT_THAT(refusalOf(R"({"$struct":[],"$shape":[1000000000,1]})"),
              HasSubstr("elements, but there are 0"));
  EXPECT_EQ(refusalOf(R"({"$double":[],"$shape":[0,2147483647,2147483647]})"), "");
  EXPECT_EQ(refusalOf(R"({"$double":[],"$shape":[2147483647,2147483647,0]})"), "");
  EXPECT_EQ(refusalOf(R"(sparse:{"rows":2147483647,"cols":1,"entries":[[2147483646,0,1]]})"), "");
}

TEST(HostileArgument, numbersOfManyDigits) {
  EXPECT_THAT(refusalOf(repeated("1", 300)), HasSubstr("cannot be stored exactly"));
  EXPECT_EQ(refusalOf("double:" + repeated("1", 300)), "");
  EXPECT_THAT(refusalOf(repeated("1", 100000)), HasSubstr("too large for a double"));
  EXPECT_EQ(refusalOf("0." + repeated("1", 100000)), "");
  EXPECT_THAT(refusalOf("int64:" + repeated("1", 100)), HasSubstr("must be between"));
  EXPECT_THAT(refusalOf("1e99999999999999999999"), HasSubstr("too large for a double"));
  EXPECT_EQ(refusalOf("1e-99999999999999999999"), "");
}

// Changes a few bytes.
std::string mutated(std::string text, std::mt19937& random) {
  constexpr std::string_view likely = "[]{}\",:$0123456789-+.eE\\u \0\xFF@truefalsn";
  for (std::size_t i = random() % 4; i > 0 && !text.empty(); --i) {
    const std::size_t at = random() % text.size();
    const char byte = likely[random() % likely.size()];
    switch (random() % 3) {
      case 0:
        text[at] = byte;
        break;
      case 1:
        text.insert(at, 1, byte);
        break;
      default:
        text.erase(at, 1 + random() % 5);
    }
  }
  return text;
}

TEST(HostileArgument, changedJsonIsTakenOrRefused) {
  std::mt19937 random(11);
  RandomArrays arrays(3);
  int taken = 0;
  int refused = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string json = mutated(tools::toJson(arrays.next()), random);
    // A file or the standard input would be read.
    if (json.starts_with('@') || json == "-") continue;
    (refusalOf(json).empty() ? taken : refused) += 1;
  }
  EXPECT_GT(taken, 1000);
  EXPECT_GT(refused, 1000);
}

TEST(HostileArgument, changedCommaSeparatedValuesAreTakenOrRefused) {
  std::mt19937 random(12);
  int taken = 0;
  int refused = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string csv = mutated("x,\"y \"\"z\"\"\"\r\n1,2\n# note\n\n-3.5e1,\n4,abc\n", random);
    try {
      const tools::CsvTable table = tools::tableFrom(csv);
      ASSERT_FALSE(table.isOfNumbers && table.rows() != 0 && table.columns == 0);
      if (!table.isOfNumbers) tools::toJson(tools::cellOf(table));
      ++taken;
    } catch (const tools::BadText&) {
      ++refused;
    }
  }
  EXPECT_GT(taken, 1000);
  EXPECT_GT(refused, 1000);
}

}  // namespace
}  // namespace hcy::test
