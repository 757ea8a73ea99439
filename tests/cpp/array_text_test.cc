// SPDX-License-Identifier: Apache-2.0
//
// UTF-8 in C++, UTF-16 in arrays.

#include <gtest/gtest.h>

#include <hcy/hcyclient.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace hcyclient {
namespace {

// What the C interface makes of an array.
std::string textOfC(const Array& array) {
  const std::unique_ptr<char, void (*)(void*)> text(hcyArrayToString(array.get()), hcyFree);
  return text ? text.get() : "null";
}

Array unitsOf(const std::u16string& units) { return Array(units); }

TEST(CppArrayText, isUtf16InARow) {
  const std::string text = u8"Z\u00fcrich \u20ac \U0001F642";
  const Array array = text;
  EXPECT_TRUE(array.isText());
  EXPECT_EQ(array.shape(), (Shape{1, 11}));
  const auto units = array.toVector<char16_t>();
  EXPECT_EQ(std::u16string(units.begin(), units.end()), u"Z\u00fcrich \u20ac \U0001F642");
  EXPECT_EQ(array.toString(), text);
}

TEST(CppArrayText, isMadeFromEachKindOfUtf16) {
  const Array fromLiteral = u"caf\u00e9";
  const Array fromString = std::u16string(u"caf\u00e9");
  EXPECT_EQ(fromLiteral.shape(), (Shape{1, 4}));
  EXPECT_EQ(fromLiteral, fromString);
  EXPECT_EQ(fromLiteral, Array(std::u16string_view(u"caf\u00e9")));
}

TEST(CppArrayText, isNotMadeFromANullPointer) {
  EXPECT_THROW(Array(static_cast<const char*>(nullptr)), UsageError);
  EXPECT_THROW(Array(static_cast<const char16_t*>(nullptr)), UsageError);
}

TEST(CppArrayText, mayBeEmptyAsInC) {
  const Array array = "";
  EXPECT_EQ(array.shape(), (Shape{0, 0}));
  EXPECT_EQ(array.toString(), "");
  EXPECT_EQ(unitsOf(u"").shape(), (Shape{0, 0}));
}

TEST(CppArrayText, keepsANul) {
  const std::string text("a\0b\0", 4);
  const Array array = text;
  EXPECT_EQ(array.columns(), 4U);
  EXPECT_EQ(array.toString(), text);
}

TEST(CppArrayText, keepsEveryCodePoint) {
  std::u16string all;
  for (char32_t unit = 1; unit < 0x10000; ++unit) {
    if (unit < 0xD800 || unit > 0xDFFF) all += static_cast<char16_t>(unit);
  }
  for (char16_t high = 0xD800; high < 0xDC00; ++high) {
    for (const char16_t low : {u'\xDC00', u'\xDDAA', u'\xDFFF'}) (all += high) += low;
  }
  const Array array = unitsOf(all);
  const std::string text = array.toString();
  EXPECT_EQ(text, textOfC(array));
  const auto units = Array(text).toVector<char16_t>();
  EXPECT_EQ(std::u16string(units.begin(), units.end()), all);
}

// What is not well-formed in an array is read as the C interface reads it.
TEST(CppArrayText, combinesStraySurrogatesAsInC) {
  for (const char16_t first : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDFFF'}) {
    for (const char16_t second : {u'a', u'\xD800', u'\xDC00', u'\xDFFF', u'\xFFFF'}) {
      const Array array = unitsOf({first, second, u'z'});
      EXPECT_EQ(array.toString(), textOfC(array)) << std::hex << int{first} << ' ' << int{second};
    }
    EXPECT_THROW(unitsOf({u'a', first}).toString(), UsageError);
  }
}

TEST(CppArrayText, isNotMadeFromWhatIsNotUtf8) {
  for (const char* text : {"\x80",
                           "\xBF",
                           "\xA2\x80",
                           "\xBF\xBF",
                           "\xC0\x80",
                           "\xC1\xBF",
                           "\xC2",
                           "\xC2\x41",
                           "\xC2\xC2",
                           "\xE0\x80\x80",
                           "\xE0\x9F\xBF",
                           "\xE2\x82",
                           "\xE2\x41\x82",
                           "\xE2\x82\x41",
                           "\xED\xA0\x80",
                           "\xED\xBF\xBF",
                           "\xF0\x80\x80\x80",
                           "\xF0\x8F\xBF\xBF",
                           "\xF0\x9F\x99",
                           "\xF0\x9F\x99\x41",
                           "\xF4\x90\x80\x80",
                           "\xF5\x80\x80\x80",
                           "\xF8\x88\x80\x80\x80",
                           "\xF8\x90\x80\x80",
                           "\xFF\x90\x80\x80",
                           "\xFE",
                           "\xFF",
                           "ab\xFF"}) {
    EXPECT_THROW(Array{text}, UsageError) << ::testing::PrintToString(text);
  }
  for (const char* text : {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                           "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(Array(text).toString(), text);
  }
}

TEST(CppArrayText, isNotMadeFromBytesBehindItsEnd) {
  const std::string text = u8"\u00e9\u20ac\U0001F642";
  using Part = std::pair<std::size_t, std::size_t>;
  for (const auto& [begin, size] : {Part(0, 1), Part(2, 2), Part(5, 3)}) {
    EXPECT_THROW(Array(std::string_view(text).substr(begin, size)), UsageError) << begin;
  }
}

TEST(CppArrayText, isReadFromAMatrixInColumns) {
  EXPECT_EQ(Array({u'a', u'b', u'c', u'd'}, {2, 2}).toString(), "abcd");
}

TEST(CppArrayText, comesFromACharArrayAlone) {
  EXPECT_THROW(Array(1.0).toString(), UsageError);
  EXPECT_THROW(Array::cells({1, 1}).toString(), UsageError);
}

TEST(CppArrayText, fillsCells) {
  const std::vector<std::string> texts = {"one", "", u8"\u00e9"};
  const Array array = texts;
  EXPECT_TRUE(array.isCell());
  EXPECT_EQ(array.shape(), (Shape{3, 1}));
  EXPECT_EQ(array.toVector<std::string>(), texts);
  EXPECT_THROW(Array::cellOf({"a", 1.0}).toVector<std::string>(), UsageError);
  EXPECT_THROW(Array("a").toVector<std::string>(), UsageError);
}

TEST(CppArrayText, mayHaveWhatIsNotAsciiAnywhere) {
  for (std::size_t length = 1; length <= 20; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      const std::string before(at, 'a');
      const std::string after(length - at - 1, 'z');
      const Array umlaut = before + "\u00fc" + after;
      EXPECT_EQ(umlaut.size(), length);
      EXPECT_EQ(umlaut.span<char16_t>()[at], u'\u00fc');
      EXPECT_EQ(umlaut.toString(), before + "\u00fc" + after);
      EXPECT_EQ(Array(before + "\U0001f600" + after).toString(), before + "\U0001f600" + after);
    }
  }
}

}  // namespace
}  // namespace hcyclient
