// SPDX-License-Identifier: Apache-2.0

#include "output/display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

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

std::size_t linesOf(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(Display, allOutputsTogetherFitTheLines) {
  using hcyclient::Array;
  std::vector<Array> outputs;
  outputs.push_back(Array::zeros<double>({20, 20, 20}));
  const std::string pages = tools::displayAll(outputs, 80, 22);
  EXPECT_LE(linesOf(pages), 22U);
  EXPECT_NE(pages.find("  … 17 more pages\n"), pages.npos) << pages;
  EXPECT_EQ(linesOf(tools::displayAll(outputs, 80, 0)), 421U);
  outputs.push_back(Array::zeros<double>({100, 1}));
  EXPECT_LE(linesOf(tools::displayAll(outputs, 80, 22)), 22U);
  EXPECT_NE(tools::displayAll(outputs, 80, 22).find("\nout 2: double 100-by-1\n"), pages.npos);
}

TEST(Display, fieldsAreFoldedToo) {
  std::string members;
  for (int i = 0; i < 100; ++i) {
    members += (i == 0 ? "\"f" : ",\"f") + std::to_string(i) + "\":[[1],[2],[3]]";
  }
  const auto outputs = tools::arraysFrom({"{" + members + "}"});
  const std::string text = tools::displayAll(outputs, 80, 22);
  EXPECT_LE(linesOf(text), 22U);
  EXPECT_NE(text.find("  f0: double 3-by-1\n"), text.npos) << text;
  EXPECT_NE(text.find(" more fields\n  f9"), text.npos) << text;
}

TEST(Display, whatCannotBeFoldedIsCutInTheMiddle) {
  const std::string nested = std::string(40, '[') + "\"a\"" + std::string(40, ']');
  const auto outputs = tools::arraysFrom({nested});
  const std::string all = tools::displayAll(outputs, 0, 0);
  const std::string text = tools::displayAll(outputs, 0, 11);
  ASSERT_GT(linesOf(all), 11U);
  EXPECT_EQ(linesOf(text), 11U);
  EXPECT_NE(text.find("\n… " + std::to_string(linesOf(all) - 10) + " more lines\n"), text.npos)
      << text;
  EXPECT_TRUE(text.starts_with(all.substr(0, all.find('\n') + 1)));
  EXPECT_TRUE(text.ends_with(all.substr(all.rfind(' '))));
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
