// SPDX-License-Identifier: Apache-2.0

#include "output/display.h"

#include <gtest/gtest.h>

#include <string>

#include "arguments/argument.h"
#include "output/progress_bar.h"
#include "text/text.h"

namespace hcy::test {
namespace {

std::string shown(const std::string& argument, std::size_t width = 0) {
  return "\n" + tools::display("ans", tools::arraysFrom({argument})[0], {width});
}

TEST(Display, singleValuesStandBehindTheirShape) {
  EXPECT_EQ(shown("5"), "\nans: double 1-by-1 = 5\n");
  EXPECT_EQ(shown("1234567"), "\nans: double 1-by-1 = 1234567\n");
  EXPECT_EQ(shown("-9007199254740991"), "\nans: double 1-by-1 = -9007199254740991\n");
  EXPECT_EQ(shown("9007199254740992"), "\nans: double 1-by-1 = 9.0072e+15\n");
  EXPECT_EQ(shown("int64:-9223372036854775808"), "\nans: int64 1-by-1 = -9223372036854775808\n");
  EXPECT_EQ(shown("0.1234567"), "\nans: double 1-by-1 = 0.123457\n");
  EXPECT_EQ(shown("double:\"-Infinity\""), "\nans: double 1-by-1 = -Inf\n");
  EXPECT_EQ(shown("uint8:200"), "\nans: uint8 1-by-1 = 200\n");
  EXPECT_EQ(shown("true"), "\nans: logical 1-by-1 = true\n");
  EXPECT_EQ(shown("complex:{\"re\":1,\"im\":-2}"), "\nans: complex double 1-by-1 = 1 - 2i\n");
  EXPECT_EQ(shown(R"("text")"), "\nans: char 1-by-4 = \"text\"\n");
  EXPECT_EQ(shown(R"({"$double":[],"$shape":[0,3]})"), "\nans: double 0-by-3\n");
}

TEST(Display, columnsAreAligned) {
  EXPECT_EQ(shown("[[1,-20],[300.5,4]]"), R"(
ans: double 2-by-2
      1  -20
  300.5    4
)");
  EXPECT_EQ(shown(R"({"$int8":[1,2,3,4,5,6,7,8],"$shape":[1,2,2,2]})"), R"(
ans: int8 1-by-2-by-2-by-2
  (:, :, 0, 0)
  1  2
  (:, :, 1, 0)
  3  4
  (:, :, 0, 1)
  5  6
  (:, :, 1, 1)
  7  8
)");
  EXPECT_EQ(shown(R"(sparse:{"rows":30,"cols":9,"entries":[[0,0,1],[12,8,-2.5]]})"), R"(
ans: sparse double 30-by-9, 2 stored
   (0, 0)     1
  (12, 8)  -2.5
)");
  EXPECT_EQ(shown(R"(sparse:{"rows":2,"cols":2,"entries":[[0,1,1,-2]]})"), R"(
ans: sparse complex double 2-by-2, 1 stored
  (0, 1)  1 - 2i
)");
  EXPECT_EQ(shown(R"(sparse:{"rows":2,"cols":2,"entries":[[1,0,true]]})"), R"(
ans: sparse logical 2-by-2, 1 stored
  (1, 0)  true
)");
  EXPECT_EQ(shown(R"(char:["ab","cd"])"), R"(
ans: char 2-by-2
  "ab"
  "cd"
)");
  EXPECT_EQ(shown(R"({"$char":"abcd","$shape":[1,2,2]})"), R"(
ans: char 1-by-2-by-2
  (:, :, 0)
  "ab"
  (:, :, 1)
  "cd"
)");
}

TEST(Display, structsAndCellsAreIndented) {
  EXPECT_EQ(shown(R"({"a":[1,"x"],"b":[{"c":1},{"c":[2,3]}]})"), R"(
ans: struct 1-by-1
  a: cell 1-by-2
    (0, 0): double 1-by-1 = 1
    (0, 1): char 1-by-1 = "x"
  b: struct 1-by-2
    (0, 0):
      c: double 1-by-1 = 1
    (0, 1):
      c: double 1-by-2
        2  3
)");
  EXPECT_EQ(shown(R"({"$struct":[],"$fields":["a","b"]})"),
            "\nans: struct 0-by-0 with fields a, b\n");
}

TEST(Display, aCellOfOneRowAtMostEndsWithWhatIsLeftOut) {
  const auto arrays = tools::arraysFrom({R"([1,"x"])"});
  EXPECT_EQ(tools::display("ans", arrays[0], {80, 1}),
            "ans: cell 1-by-2\n  (0, 0): double 1-by-1 = 1\n  … 1 more element\n");
}

TEST(Display, linesAreCutToTheWidth) {
  EXPECT_EQ(shown("[[10,20,30,40],[50,60,70,80]]", 14), R"(
ans: double 2…
  10  20  30
  50  60  70
  … 1 more co…
)");
  EXPECT_EQ(shown("[10,20,30]", 20), "\nans: double 1-by-3\n  10  20  30\n");
  EXPECT_EQ(shown("[100000,200000,300000]", 20),
            "\nans: double 1-by-3\n  100000  200000\n  … 1 more column\n");
  EXPECT_EQ(shown("[10000000,20000000,30000000]", 19),
            "\nans: double 1-by-3\n  10000000\n  … 2 more columns\n");
  EXPECT_EQ(shown(R"("ééééééééé")", 26), "\nans: char 1-by-9 = \"ééééé…\n");
  EXPECT_EQ(shown(R"("中中中中")", 26), "\nans: char 1-by-4 = \"中中…\n");
  EXPECT_EQ(shown("[1,2]", 1), "\n…\n…\n…\n");
}

TEST(Display, nothingReachesTheTerminalAsACommand) {
  EXPECT_EQ(shown(R"("\u001b[2J\u009b\u202e\n")"),
            "\nans: char 1-by-7 = \"\\u001b[2J\\u009b\\u202e\\n\"\n");
  EXPECT_EQ(shown(R"({"\u001b[2J":1})"), "\nans: struct 1-by-1\n  \\u001b[2J: double 1-by-1 = 1\n");
  EXPECT_EQ(shown("char:[55357,65]"), "\nans: char 1-by-2 = \"\\ud83dA\"\n");
  EXPECT_EQ(tools::printable("\u2066\u2069\u200e\u061c\u2028"),
            "\\u2066\\u2069\\u200e\\u061c\\u2028");
  EXPECT_EQ(tools::printable("a\x1b]0;\x07\xff\xc3\xa9"), "a\\u001b]0;\\u0007\uFFFDé");
}

TEST(Text, whatIsNoUtf8IsReplacedByteByByte) {
  EXPECT_EQ(tools::printable("\xC0\x80"), "\uFFFD\uFFFD");                      // too long
  EXPECT_EQ(tools::printable("\xE0\x9F\xBF"), "\uFFFD\uFFFD\uFFFD");            // the same
  EXPECT_EQ(tools::printable("\xF0\x8F\xBF\xBF"), "\uFFFD\uFFFD\uFFFD\uFFFD");  // the same
  EXPECT_EQ(tools::printable("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");            // a surrogate
  EXPECT_EQ(tools::printable("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");  // too large
  EXPECT_EQ(tools::printable("\xE4\xB8"), "\uFFFD\uFFFD");                      // cut short
  EXPECT_EQ(tools::printable("\xF4\x8F\xBF\xBF\xED\x9F\xBF"), "\xF4\x8F\xBF\xBF\xED\x9F\xBF");
}

TEST(Text, charactersTakeNoColumnOrTwo) {
  EXPECT_EQ(tools::displayWidth("e\u0301\u200D"), 1U);
  EXPECT_EQ(tools::displayWidth("中😀é"), 5U);
}

TEST(ProgressBar, fitsTheWidth) {
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 80),
            "[####################....................] 50/100  25 calls/s");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 31), "[#####.....] 50/100  25 calls/s");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 22), "[.] 50/100  25 calls/s");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 21), "50/100  25 calls/s");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 18), "50/100  25 calls/s");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 10), "50/100  2…");
  EXPECT_EQ(tools::progressLine(50, 100, 2.0, 0), "…");
  EXPECT_EQ(tools::progressLine(0, 100, 0.0, 80),
            "[........................................] 0/100  0 calls/s");
  EXPECT_EQ(tools::progressLine(101, 100, 2.0, 80), "101  50 calls/s");
}

}  // namespace
}  // namespace hcy::test
