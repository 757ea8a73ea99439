// SPDX-License-Identifier: Apache-2.0

#include "wire/utf16.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace hcy {
namespace {

struct Decoded {
  std::uint32_t codePoint;
  std::ptrdiff_t consumed;
  bool operator==(const Decoded&) const = default;
};

Decoded decoded(const std::u16string& units) {
  const char16_t* position = units.data();
  const std::uint32_t codePoint = decodeUtf16(position, units.data() + units.size());
  return {codePoint, position - units.data()};
}

void expectInvalid(const std::u16string& units) {
  try {
    decoded(units);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::runtime_error& failure) {
    EXPECT_STREQ(failure.what(), "Invalid UTF-16 data");
  }
}

TEST(Utf16, UnitsOutsideTheSurrogatesAreCodePoints) {
  for (const char16_t unit : std::u16string{0x0000, 0x0041, 0xD7FF, 0xE000, 0xFFFF}) {
    EXPECT_EQ(decoded({unit, u'x'}), (Decoded{unit, 1}));
    EXPECT_EQ(decoded({unit}), (Decoded{unit, 1}));
  }
}

TEST(Utf16, PairsOfSurrogatesAreOneCodePoint) {
  EXPECT_EQ(decoded({0xD800, 0xDC00}), (Decoded{0x10000, 2}));
  EXPECT_EQ(decoded({0xD83D, 0xDE00}), (Decoded{0x1F600, 2}));
  EXPECT_EQ(decoded({0xDBFF, 0xDFFF, u'x'}), (Decoded{0x10FFFF, 2}));
}

TEST(Utf16, ALowSurrogateInFirstPlaceIsCombinedWithWrapAround) {
  EXPECT_EQ(decoded({0xDC00, 0x0041}), (Decoded{0x2441, 2}));
}

TEST(Utf16, TheSecondUnitIsNotTested) {
  // (0 << 10 | 0x0041 - 0xDC00) + 0x10000 in 32 bits
  EXPECT_EQ(decoded({0xD800, 0x0041}), (Decoded{0x2441, 2}));
  // (1 << 10 | 0xD800 - 0xDC00) + 0x10000 in 32 bits
  EXPECT_EQ(decoded({0xD801, 0xD800}), (Decoded{0xFC00, 2}));
}

TEST(Utf16, ASurrogateAtTheEndIsInvalid) {
  expectInvalid({0xD800});
  expectInvalid({0xDBFF});
  expectInvalid({0xDC00});
  expectInvalid({0xDFFF});
}

std::string utf8Of(const std::u16string& units) {
  std::string bytes(4 * units.size() + 1, '#');
  const char* const end = writeUtf8(units, bytes.data());
  bytes.resize(static_cast<std::size_t>(end - bytes.data()));
  EXPECT_EQ(utf8Length(units), bytes.size());
  return bytes;
}

TEST(Utf8, HasTheLengthThatIsWritten) {
  const std::u16string units = {0x0000, 0x0048, 0x007F, 0x0080, 0x07FF, 0x0800,
                                0x20AC, 0xFFFF, 0xD83D, 0xDE00, 0xDC00, 0x0041};
  EXPECT_EQ(utf8Of(units), std::string("\0H\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF"
                                       "\xF0\x9F\x98\x80\xE2\x91\x81",
                                       23));
}

// Text is looked at in parts; none of them must show.
TEST(Utf8, IsTheSameWhereverOtherTextStandsInLongAscii) {
  for (std::size_t length = 0; length < 200; ++length) {
    std::u16string ascii(length, u'a');
    for (std::size_t i = 0; i < length; ++i) ascii[i] = static_cast<char16_t>(i % 0x80);
    std::string bytes(ascii.begin(), ascii.end());
    EXPECT_EQ(utf8Of(ascii), bytes);
    const std::u16string zeros(length, u'\0');
    for (std::size_t at = 0; at < length; ++at) {
      EXPECT_EQ(utf8Of(std::u16string(zeros).insert(at, u"\x0080")),
                std::string(length, '\0').insert(at, "\xC2\x80"));
      EXPECT_EQ(utf8Of(std::u16string(ascii).insert(at, u"\xD83D\xDE00")),
                std::string(bytes).insert(at, "\xF0\x9F\x98\x80"));
    }
  }
}

TEST(Utf8, OfNothingIsNothing) {
  EXPECT_EQ(utf8Length(std::u16string_view()), 0U);
  char byte = '#';
  EXPECT_EQ(writeUtf8(std::u16string_view(), &byte), &byte);
  EXPECT_EQ(byte, '#');
}

TEST(Utf8, HasNoLengthForHalfAPair) {
  EXPECT_THROW(utf8Length(std::u16string_view(u"ab\xD800")), std::runtime_error);
}

}  // namespace
}  // namespace hcy
