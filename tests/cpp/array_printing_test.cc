// SPDX-License-Identifier: Apache-2.0
//
// Arrays for a person to read.

#include <gtest/gtest.h>

#include <complex>
#include <hcy/hcyclient.hpp>
#include <limits>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {
namespace {

TEST(CppArrayPrinting, showsOneValueOnItsLine) {
  EXPECT_EQ(format(Array(5.0)), "double 1-by-1 = 5");
  EXPECT_EQ(format(Array(0.1)), "double 1-by-1 = 0.1");
  EXPECT_EQ(format(Array(true)), "logical 1-by-1 = true");
  EXPECT_EQ(format(Array(false)), "logical 1-by-1 = false");
  EXPECT_EQ(format(Array(std::int8_t{-3})), "int8 1-by-1 = -3");
  EXPECT_EQ(format(Array(std::complex<double>(1, -2.5))), "complex double 1-by-1 = 1 - 2.5i");
  EXPECT_EQ(format(Array(std::complex<float>(1, 2))), "complex single 1-by-1 = 1 + 2i");
  EXPECT_EQ(format(Array("Z\u00fcrich")), "char 1-by-6 = \"Z\u00fcrich\"");
  EXPECT_EQ(format(Array(std::numeric_limits<double>::infinity())), "double 1-by-1 = Inf");
  EXPECT_EQ(format(Array(-std::numeric_limits<double>::infinity())), "double 1-by-1 = -Inf");
  EXPECT_EQ(format(Array(std::numeric_limits<double>::quiet_NaN())), "double 1-by-1 = NaN");
  EXPECT_EQ(format(Array()), "(no array)");
}

TEST(CppArrayPrinting, showsWholeNumbersInFullWhileTheyAreExact) {
  EXPECT_EQ(format(Array(9007199254740991.0)), "double 1-by-1 = 9007199254740991");
  EXPECT_EQ(format(Array(9007199254740992.0)), "double 1-by-1 = 9.0072e+15");
  EXPECT_EQ(format(Array(-1e300)), "double 1-by-1 = -1e+300");
}

TEST(CppArrayPrinting, alignsColumns) {
  std::ostringstream out;
  out << Array::fromRows<double>({{1, 200}, {-3.5, 4}});
  EXPECT_EQ(out.str(), "double 2-by-2\n     1  200\n  -3.5    4");
  EXPECT_EQ(format(Array::zeros<double>(0, 3)), "double 0-by-3");
  EXPECT_EQ(format(Array({1, 2}, {1, 1, 2})),
            "int32 1-by-1-by-2\n  (:, :, 0)\n  1\n  (:, :, 1)\n  2");
}

TEST(CppArrayPrinting, showsContainers) {
  Array s = Array::structOf({{"name", "Ada"}, {"list", Array::cellOf({1.0, true})}});
  const std::string text =
      "struct 1-by-1\n  name: char 1-by-3 = \"Ada\"\n  list: cell 2-by-1\n"
      "    (0, 0): double 1-by-1 = 1\n    (1, 0): logical 1-by-1 = true";
  EXPECT_EQ(format(s), text);
  std::ostringstream out;
  out << s("name");
  EXPECT_EQ(out.str(), "char 1-by-3 = \"Ada\"");
  Array two = Array::structs({1, 2}, {"x"});
  two("x") = 1.0;
  two(1, "x") = 2.0;
  EXPECT_EQ(format(two),
            "struct 1-by-2\n  (0, 0):\n    x: double 1-by-1 = 1\n"
            "  (0, 1):\n    x: double 1-by-1 = 2");
  EXPECT_EQ(format(Array::structs({2, 1}, {})), "struct 2-by-1");
}

TEST(CppArrayPrinting, showsSparseArrays) {
  EXPECT_EQ(format(Array::sparse<double>(3, 3, {{0, 0, 1.5}, {2, 1, -2.0}})),
            "sparse double 3-by-3, 2 stored\n  (0, 0)  1.5\n  (2, 1)  -2");
  EXPECT_EQ(format(Array::sparse<bool>(1, 1, {{0, 0, true}})),
            "sparse logical 1-by-1, 1 stored\n  (0, 0)  true");
  EXPECT_EQ(format(Array::sparse<std::complex<double>>(1, 1, {{0, 0, {1, 2}}})),
            "sparse complex double 1-by-1, 1 stored\n  (0, 0)  1 + 2i");
}

TEST(CppArrayPrinting, showsTextOfSeveralRows) {
  EXPECT_EQ(format(Array(std::vector<char16_t>{u'a', u'c', u'b', u'd'}, {2, 2})),
            "char 2-by-2\n  \"ab\"\n  \"cd\"");
  EXPECT_EQ(format(Array("")), "char 0-by-0");
}

TEST(CppArrayPrinting, lendsNothingToATerminal) {
  EXPECT_EQ(format(Array("a\x1b[1m\n\t\r\"\\")), "char 1-by-10 = \"a\\u001b[1m\\n\\t\\r\\\"\\\\\"");
  EXPECT_EQ(format(Array(std::u16string_view(u"\xD83D\xDE00"))), "char 1-by-2 = \"\U0001F600\"");
  EXPECT_EQ(format(Array(std::u16string(1, char16_t{0xD83D}))), "char 1-by-1 = \"\\ud83d\"");
  EXPECT_EQ(format(Array::structOf({{"a\nb\xFF\u00e9\U0001F600", 1.0}})),
            "struct 1-by-1\n  a\\nb\uFFFD\u00e9\U0001F600: double 1-by-1 = 1");
}

// Each stretch of units that are escaped, and what is beside it.
TEST(CppArrayPrinting, escapesWhatATerminalWouldObey) {
  const auto isEscaped = [](char16_t unit) {
    const std::string text = format(Array(std::u16string{u'a', unit}));
    return text.find("\\u") != std::string::npos;
  };
  const std::vector<std::pair<char16_t, char16_t>> stretches = {{0x7F, 0x9F},     {0x61C, 0x61C},
                                                                {0x200E, 0x200F}, {0x2028, 0x202E},
                                                                {0x2066, 0x2069}, {0xD800, 0xDFFF}};
  for (const auto& [first, last] : stretches) {
    EXPECT_FALSE(isEscaped(static_cast<char16_t>(first - 1))) << std::hex << first;
    EXPECT_TRUE(isEscaped(first)) << std::hex << first;
    EXPECT_TRUE(isEscaped(last)) << std::hex << last;
    EXPECT_FALSE(isEscaped(static_cast<char16_t>(last + 1))) << std::hex << last;
  }
  EXPECT_EQ(format(Array(std::u16string{0xD83D, u'a'})), "char 1-by-2 = \"\\ud83da\"");
  EXPECT_EQ(format(Array(std::u16string{0xD83D, 0xE000})), "char 1-by-2 = \"\\ud83d\uE000\"");
}

TEST(CppArrayPrinting, isCutToASize) {
  std::vector<int> numbers(100);
  std::iota(numbers.begin(), numbers.end(), 0);
  const PrintLimits small = {20, 2, 6};
  EXPECT_EQ(format(Array(numbers), small), "int32 100-by-1\n  0\n  1\n  … 98 more rows");
  EXPECT_EQ(format(Array::row(numbers), small),
            "int32 1-by-100\n  0  1  2  3  4  5\n  … 94 more columns");
  EXPECT_EQ(format(Array(std::string(50, 'x')), small), "char 1-by-50 = \"xxx…");
  EXPECT_EQ(format(Array::cells(1, 3), small),
            "cell 1-by-3\n  (0, 0): double 0-…\n  (0, 1): double 0-…\n  … 1 more cell");
  EXPECT_EQ(
      format(Array::sparse<double>(9, 9, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}}), {40, 2, 6}),
      "sparse double 9-by-9, 4 stored\n  (0, 0)  1\n  (1, 0)  1\n  … 2 more entries");
  EXPECT_EQ(format(Array::sparse<double>(9, 9, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}}), {40, 2, 6}),
            "sparse double 9-by-9, 3 stored\n  (0, 0)  1\n  (1, 0)  1\n  … 1 more entry");
  EXPECT_EQ(format(Array::fromRows<double>({{12345, 1}, {1, 1}}), {6, 1, 9}),
            "doubl…\n  123…\n  … 1…\n  … 1…");
  EXPECT_EQ(format(Array({1, 2, 3}), {20, 9, 0}), "");
  EXPECT_EQ(format(Array({1, 2, 3}), {20, 9, 1}), "…");
  const Array nested = Array::cellOf({Array::cellOf({1, 2}), Array::cellOf({3, 4})});
  EXPECT_EQ(format(nested, {40, 2, 4}),
            "cell 2-by-1\n  (0, 0): cell 2-by-1\n    (0, 0): int32 1-by-1 = 1\n…");
  const Array deep = Array::cells(std::vector<std::size_t>(40, 1));
  EXPECT_EQ(format(deep, {200, 2, 4}).substr(0, 60),
            "cell 1-by-1-by-1-by-1-by-1-by-1-by-1-by-1-by-...\n  (0): doub");
}

}  // namespace
}  // namespace hcyclient
