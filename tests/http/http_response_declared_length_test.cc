// SPDX-License-Identifier: Apache-2.0
//
// The length that header lines declare.

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstdint>
#include <locale>
#include <string>
#include <string_view>
#include <vector>

#include "http/http_response.h"

namespace hcy {
namespace {

// What is left after a line with 5 and then these.
std::uint64_t declaredBy(const std::vector<std::string>& lines) {
  HttpResponse response(100);
  response.addHeaderLine("Content-Length: 5\r\n");
  for (const std::string& line : lines) response.addHeaderLine(line);
  return response.declaredLength();
}

void expectNoNumber(const std::string& line) {
  HttpResponse response(100);
  response.addHeaderLine("Content-Length: 5\r\n");
  try {
    response.addHeaderLine(line);
    ADD_FAILURE() << line << " declares " << response.declaredLength();
  } catch (const boost::bad_lexical_cast& failure) {
    EXPECT_STREQ(failure.what(),
                 "bad lexical cast: source type value could not be interpreted as target");
  }
  EXPECT_EQ(response.declaredLength(), 5U);
}

TEST(HttpResponseDeclaredLength, isTheNumberBehindTheColon) {
  EXPECT_EQ(declaredBy({"Content-Length: 42\r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length:42\r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length: 0\r\n"}), 0U);
}

TEST(HttpResponseDeclaredLength, mayStandBetweenWhiteSpaceOfAnyKind) {
  EXPECT_EQ(declaredBy({"Content-Length:  42 \r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length:\t\v\f42\n\t\r\n"}), 42U);
}

TEST(HttpResponseDeclaredLength, mayHaveASignAndLeadingZeros) {
  EXPECT_EQ(declaredBy({"Content-Length: +42\r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length: 00042\r\n"}), 42U);
}

TEST(HttpResponseDeclaredLength, ofANegativeNumberIsItModulo2To64) {
  EXPECT_EQ(declaredBy({"Content-Length: -1\r\n"}), UINT64_MAX);
  EXPECT_EQ(declaredBy({"Content-Length: -42\r\n"}), UINT64_MAX - 41);
  EXPECT_EQ(declaredBy({"Content-Length: -0\r\n"}), 0U);
  EXPECT_EQ(declaredBy({"Content-Length: -18446744073709551615\r\n"}), 1U);
}

TEST(HttpResponseDeclaredLength, ofANegativeNumberIsOverAnyLimit) {
  HttpResponse response(4294967295);
  response.addHeaderLine("Content-Length: -1\r\n");
  EXPECT_FALSE(response.appendBody("a", 1));
}

TEST(HttpResponseDeclaredLength, reaches64Bits) {
  EXPECT_EQ(declaredBy({"Content-Length: 18446744073709551615\r\n"}), UINT64_MAX);
  expectNoNumber("Content-Length: 18446744073709551616\r\n");
  expectNoNumber("Content-Length: -18446744073709551616\r\n");
  expectNoNumber("Content-Length: 99999999999999999999999999\r\n");
}

TEST(HttpResponseDeclaredLength, ofTheLastLineCounts) {
  EXPECT_EQ(declaredBy({"Content-Length: 7\r\n", "Content-Length: 8\r\n"}), 8U);
}

TEST(HttpResponseDeclaredLength, isReadAnywhereInALine) {
  EXPECT_EQ(declaredBy({"X-Upstream-Content-Length: 99\r\n"}), 99U);
  EXPECT_EQ(declaredBy({"X-Note: the Content-Length: 98\r\n"}), 98U);
}

TEST(HttpResponseDeclaredLength, isReadBehindTheFirstKeyOfALine) {
  expectNoNumber("Content-Length: 1 Content-Length: 2\r\n");
  EXPECT_EQ(declaredBy({"X-Content-Length-Of-Content-Length: 6\r\n"}), 6U);
}

TEST(HttpResponseDeclaredLength, endsAtTheFirstLineEndBehindTheColon) {
  EXPECT_EQ(declaredBy({"Content-Length: 7\r\n8\r\n"}), 7U);
  EXPECT_EQ(declaredBy({"X: \r\nContent-Length: 7\r\n"}), 7U);
}

TEST(HttpResponseDeclaredLength, runsToTheEndOfALineWithoutLineEnd) {
  EXPECT_EQ(declaredBy({"Content-Length: 7"}), 7U);
  EXPECT_EQ(declaredBy({"Content-Length: 7\n"}), 7U);
}

TEST(HttpResponseDeclaredLength, isUntouchedByOtherLines) {
  EXPECT_EQ(declaredBy({"content-length: 10\r\n"}), 5U);
  EXPECT_EQ(declaredBy({"CONTENT-LENGTH: 10\r\n"}), 5U);
  EXPECT_EQ(declaredBy({"Content-Lengt"}), 5U);
  EXPECT_EQ(declaredBy({"Content-Type: 10\r\n", "\r\n", ""}), 5U);
}

TEST(HttpResponseDeclaredLength, is0WhereTheNameHasNoColonBehindIt) {
  EXPECT_EQ(declaredBy({"X-Content-Length-Hint: 7\r\n"}), 0U);
  EXPECT_EQ(declaredBy({"Content-Length : 7\r\n"}), 0U);
  EXPECT_EQ(declaredBy({"Content-Length"}), 0U);  // 14 bytes, the shortest line that is looked at
}

TEST(HttpResponseDeclaredLength, withoutAValueIsNoNumber) {
  expectNoNumber("Content-Length:\r\n");
  expectNoNumber("Content-Length:");
  expectNoNumber("Content-Length:  \t\r\n");
}

TEST(HttpResponseDeclaredLength, withAnythingButDigitsIsNoNumber) {
  for (const char* value :
       {"4x", "x4", "4 2", "4.0", "1e3", "0x10", "+", "-", "+-4", "--4", "- 4", "4,000",
        "\xC2\xA0"
        "4"}) {
    expectNoNumber(std::string("Content-Length: ") + value + "\r\n");
  }
  expectNoNumber(std::string("Content-Length: 4\0\r\n", 20));
  expectNoNumber("Content-Length: 4\n2\r\n");
  expectNoNumber("Content-Length: 4\r2\r\n");
}

// Digits in groups of three, with commas between them.
class GroupingDigits : public std::numpunct<char> {
  char do_thousands_sep() const override { return ','; }
  std::string do_grouping() const override { return "\3"; }
};

class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : before_(std::locale::global(locale)) {}
  GlobalLocale(const GlobalLocale&) = delete;
  GlobalLocale& operator=(const GlobalLocale&) = delete;
  ~GlobalLocale() { std::locale::global(before_); }

 private:
  std::locale before_;
};

// Other characters are white space.
class OtherSpaces : public std::ctype<char> {
 public:
  // The base class deletes the table.
  explicit OtherSpaces(std::string_view spaces) : std::ctype<char>(tableWith(spaces), true) {}

 private:
  static const mask* tableWith(std::string_view spaces) {
    auto* const table = new mask[table_size];
    std::copy_n(classic_table(), table_size, table);
    for (const char c : spaces) table[static_cast<unsigned char>(c)] = ctype_base::space;
    for (const char c : {'\t', '\v', '\f', '\n'}) table[static_cast<unsigned char>(c)] = {};
    return table;
  }
};

TEST(HttpResponseDeclaredLength, isDigitsAloneWhateverTheLocale) {
  const GlobalLocale grouping(std::locale(std::locale(), new GroupingDigits));
  EXPECT_EQ(declaredBy({"Content-Length: 4000\r\n"}), 4000U);
  expectNoNumber("Content-Length: 4,000\r\n");
}

TEST(HttpResponseDeclaredLength, mayStandBetweenWhatTheLocaleCallsWhiteSpace) {
  expectNoNumber("Content-Length: x42_\r\n");
  expectNoNumber("Content-Length: 42\xA0\r\n");
  const GlobalLocale spaces(std::locale(std::locale(), new OtherSpaces("x_\xA0")));
  EXPECT_EQ(declaredBy({"Content-Length:x42\r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length: _x 42_x_\r\n"}), 42U);
  EXPECT_EQ(declaredBy({"Content-Length: 42\xA0\r\n"}), 42U);
  expectNoNumber("Content-Length: 4x2\r\n");
  expectNoNumber("Content-Length:\t42\r\n");
  expectNoNumber("Content-Length: 42\f\r\n");
  expectNoNumber("Content-Length: x_x\r\n");
}

}  // namespace
}  // namespace hcy
