// SPDX-License-Identifier: Apache-2.0
//
// Text out of char arrays.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

Array charRow(const std::vector<std::uint16_t>& units) {
  Array array = createArray({hcyCHAR_CLASS}, {1, units.size()});
  std::ranges::copy(units, hcyGetChars(array));
  return array;
}

// The text of the code units up to the first NUL; empty with a failure when there is none.
std::string utf8Of(const std::vector<std::uint16_t>& units) {
  const Text text(hcyArrayToString(charRow(units)));
  if (text == nullptr) {
    ADD_FAILURE() << "no text";
    return {};
  }
  return text.get();
}

bool hasText(const hcyArray* array) { return Text(hcyArrayToString(array)) != nullptr; }

TEST(Utf8Text, EncodesEveryLength) {
  EXPECT_EQ(utf8Of({0x0048, 0x00E9, 0x20AC, 0xD83D, 0xDE00}),
            "\x48\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(Utf8Text, ChangesLengthAtTheBoundaries) {
  EXPECT_EQ(utf8Of({0x0001}), "\x01");
  EXPECT_EQ(utf8Of({0x007F}), "\x7F");
  EXPECT_EQ(utf8Of({0x0080}), "\xC2\x80");
  EXPECT_EQ(utf8Of({0x07FF}), "\xDF\xBF");
  EXPECT_EQ(utf8Of({0x0800}), "\xE0\xA0\x80");
  EXPECT_EQ(utf8Of({0xD7FF}), "\xED\x9F\xBF");
  EXPECT_EQ(utf8Of({0xE000}), "\xEE\x80\x80");
  EXPECT_EQ(utf8Of({0xFFFF}), "\xEF\xBF\xBF");
  EXPECT_EQ(utf8Of({0xD800, 0xDC00}), "\xF0\x90\x80\x80");
  EXPECT_EQ(utf8Of({0xDBFF, 0xDFFF}), "\xF4\x8F\xBF\xBF");
}

TEST(Utf8Text, CombinesALowSurrogateWithWhateverFollows) {
  EXPECT_EQ(utf8Of({0xDC00, 0x0041, 'z'}), "\xE2\x91\x81z");
}

TEST(Utf8Text, DoesNotEndInHalfAPair) {
  EXPECT_FALSE(hasText(charRow({0xD800})));
  EXPECT_FALSE(hasText(charRow({'a', 'b', 0xDBFF})));
  EXPECT_FALSE(hasText(charRow({0xDC00})));
  EXPECT_FALSE(hasText(charRow({0xD83D, 0xDE00, 0xDFFF})));
}

TEST(Utf8Text, OfNoCodeUnitsIsNull) {
  EXPECT_FALSE(hasText(Array(hcyCreateString(""))));
  EXPECT_FALSE(hasText(Array(createArray({hcyCHAR_CLASS}, {3, 0}))));
}

TEST(Utf8Text, ReadsAMatrixDownItsColumns) {
  const char* const rows[] = {"ab", "cd"};
  const Text text(hcyArrayToString(Array(hcyCreateCharMatrixFromStrings(2, rows))));
  EXPECT_STREQ(text.get(), "acbd");
}

TEST(Utf8Text, GoesOnBehindANul) {
  const Text text(hcyArrayToString(charRow({'a', 0, 0x00E9})));
  EXPECT_EQ(std::memcmp(text.get(), "a\0\xC3\xA9", 5), 0);
}

TEST(Utf8Text, OfManyWideCodeUnitsIsComplete) {
  for (std::size_t length = 1; length <= 70; ++length) {
    std::string expected;
    for (std::size_t i = 0; i < length; ++i) expected += "\xE2\x82\xAC";
    EXPECT_EQ(utf8Of(std::vector<std::uint16_t>(length, 0x20AC)), expected);
  }
}

TEST(Utf8Text, FollowsWhatWasWrittenToTheArray) {
  const Array array = hcyCreateString("cat");
  hcyGetChars(array)[0] = 'b';
  EXPECT_STREQ(Text(hcyArrayToString(array)).get(), "bat");
}

class TextOf : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, TextOf, testing::ValuesIn(allKinds()), kindName);

TEST_P(TextOf, IsThatOfCharArraysOnly) {
  const Array array = filledMatrix(GetParam(), 1, 2);
  const bool isChar = GetParam().id == hcyCHAR_CLASS;
  EXPECT_EQ(hasText(array), isChar);
  char buffer[] = "unchanged";
  EXPECT_EQ(hcyGetString(array, buffer, sizeof buffer), isChar ? 0 : 1);
  EXPECT_STREQ(buffer, isChar ? "\x01\x02" : "unchanged");
  EXPECT_EQ(hcyGetString(array, nullptr, 0), isChar ? 0 : 1);
}

// What is in a buffer of ten '#' after the copy, up to the given length.
std::string copied(const hcyArray* array, std::size_t buflen, int expectedResult) {
  std::string buffer(10, '#');
  EXPECT_EQ(hcyGetString(array, buffer.data(), buflen), expectedResult) << buflen;
  return buffer;
}

TEST(CopiedText, FitsWithItsNulOrIsCut) {
  const Array array = hcyCreateString("hello");
  EXPECT_EQ(copied(array, 10, 0), std::string("hello\0####", 10));
  EXPECT_EQ(copied(array, 7, 0), std::string("hello\0####", 10));
  EXPECT_EQ(copied(array, 6, 0), std::string("hello\0####", 10));
  EXPECT_EQ(copied(array, 5, 1), std::string("hell\0#####", 10));
  EXPECT_EQ(copied(array, 2, 1), std::string("h\0########", 10));
  EXPECT_EQ(copied(array, 1, 1), std::string("\0#########", 10));
  EXPECT_EQ(copied(array, 0, 0), std::string(10, '#'));
}

TEST(CopiedText, OfNoCodeUnitsIsEmpty) {
  const Array array = hcyCreateString("");
  EXPECT_EQ(copied(array, 10, 0), std::string("\0#########", 10));
  EXPECT_EQ(copied(array, 1, 0), std::string("\0#########", 10));
}

TEST(CopiedText, ReadsAMatrixDownItsColumns) {
  const char* const rows[] = {"ab", "cd"};
  const Array array = hcyCreateCharMatrixFromStrings(2, rows);
  EXPECT_EQ(copied(array, 10, 0), std::string("acbd\0#####", 10));
  EXPECT_EQ(copied(array, 3, 1), std::string("ac\0#######", 10));
}

TEST(CopiedText, HasTheLowByteOfEachCodeUnit) {
  EXPECT_EQ(copied(charRow({0x20AC, 0x0141, 0, 0xD83D}), 10, 0),
            std::string("\xAC\x41\0\x3D\0#####", 10));
}

TEST(CopiedText, GivesBackTheBytesOfAString) {
  EXPECT_EQ(copied(Array(hcyCreateString("\xC3\xA9")), 10, 0),
            std::string("\xC3\xA9\0#######", 10));
}

}  // namespace
}  // namespace hcy::abi
