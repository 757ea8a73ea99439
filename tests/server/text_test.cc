// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>

#include "calls.h"

namespace hcy::test {
namespace {

std::u16string upper(const LocalServer& server, const std::u16string& text) {
  const auto output = outputs(server, "/text/upper", 1, {chars(text)})[0];
  expectWellFormed(output);
  return textOf(output);
}

TEST(Upper, ChangesLettersAlone) {
  const LocalServer server;
  EXPECT_EQ(upper(server, u"@AZ[`az{ 1\u00e0\u00f6\u00f8\u00fe\u00ff"),
            u"@AZ[`AZ{ 1\u00c0\u00d6\u00d8\u00de\u0178");
  EXPECT_EQ(upper(server, u"\u00d7\u00df\u00f7\u00b5\u0131\U0001F600"),
            u"\u00d7\u00df\u00f7\u00b5\u0131\U0001F600");
  EXPECT_EQ(upper(server, u""), u"");
}

TEST(Upper, KeepsTheShape) {
  const LocalServer server;
  auto text = chars(u"abcdef");
  text.clear_dimension();
  for (const unsigned extent : {3U, 1U, 2U}) text.add_dimension(extent);
  const auto output = outputs(server, "/text/upper", 1, {text})[0];
  EXPECT_EQ(dimensionsOf(output), (Dimensions{3, 1, 2}));
  EXPECT_EQ(textOf(output), u"ABCDEF");
}

TEST(Upper, RefusesWrongArguments) {
  const LocalServer server;
  auto shorter = chars(u"ab");
  shorter.set_dimension(1, 3);
  EXPECT_EQ(errorOf(server, "/text/upper", 1, {shorter}), "halcyon:argument:size");
  EXPECT_EQ(errorOf(server, "/text/upper", 1, {scalar(1)}), "halcyon:argument:class");
  EXPECT_EQ(errorOf(server, "/text/upper", 1, {}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/text/upper", 2, {chars(u"a")}), "halcyon:argument:count");
}

std::vector<std::u16string> split(const LocalServer& server,
                                  const std::vector<VORTEN_Array>& arguments) {
  const auto cell = outputs(server, "/text/split", 1, arguments)[0];
  expectWellFormed(cell);
  EXPECT_EQ(cell.dimension(0), 1U);
  std::vector<std::u16string> pieces;
  for (const VORTEN_Array& piece : cell.cell().elements()) {
    EXPECT_EQ(piece.type(), VORTEN_Array::CHAR);
    EXPECT_EQ(piece.dimension(0), 1U);
    pieces.push_back(textOf(piece));
  }
  return pieces;
}

using Pieces = std::vector<std::u16string>;

TEST(Split, SplitsAtTheDelimiter) {
  const LocalServer server;
  EXPECT_EQ(split(server, {chars(u"one two  three")}), (Pieces{u"one", u"two", u"", u"three"}));
  EXPECT_EQ(split(server, {chars(u",a,b,"), chars(u",")}), (Pieces{u"", u"a", u"b", u""}));
  EXPECT_EQ(split(server, {chars(u"a--b---c"), chars(u"--")}), (Pieces{u"a", u"b", u"-c"}));
  EXPECT_EQ(split(server, {chars(u"whole"), chars(u"wholesome")}), (Pieces{u"whole"}));
  EXPECT_EQ(split(server, {chars(u"")}), (Pieces{u""}));
  EXPECT_EQ(split(server, {chars(u"a\u00e9\U0001F600\u00e9b"), chars(u"\u00e9")}),
            (Pieces{u"a", u"\U0001F600", u"b"}));
}

// The pieces of short texts, found one unit at a time.
Pieces piecesOf(const std::u16string& text, const std::u16string& delimiter) {
  Pieces pieces(1);
  for (std::size_t i = 0; i < text.size();) {
    if (text.compare(i, delimiter.size(), delimiter) == 0) {
      pieces.emplace_back();
      i += delimiter.size();
    } else {
      pieces.back().push_back(text[i++]);
    }
  }
  return pieces;
}

TEST(Split, FindsDelimitersThatRepeatThemselves) {
  const LocalServer server;
  for (const std::u16string delimiter : {u"a", u"aa", u"ab", u"aab", u"aba", u"abab", u"aabaa"}) {
    // One in seven of the texts of ten letters a and b.
    for (unsigned bits = 0; bits < 1024; bits += 7) {
      std::u16string text;
      for (unsigned i = 0; i < 10; ++i) text.push_back((bits >> i & 1U) != 0 ? u'a' : u'b');
      EXPECT_EQ(split(server, {chars(text), chars(delimiter)}), piecesOf(text, delimiter));
    }
  }
}

TEST(Split, TakesTimeInProportionToItsInput) {
  const LocalServer server;
  const std::u16string text(600'000, u'a');
  const auto delimiter = chars(std::u16string(300'000, u'a') + u"b");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(split(server, {chars(text), delimiter}), (Pieces{text}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(Split, RefusesWrongArguments) {
  const LocalServer server;
  const auto error = [&server](const std::vector<VORTEN_Array>& arguments) {
    return errorOf(server, "/text/split", 1, arguments);
  };
  auto column = chars(u"ab");
  column.set_dimension(0, 2);
  column.set_dimension(1, 1);
  EXPECT_EQ(error({column}), "halcyon:argument:size");
  EXPECT_EQ(error({chars(u"a"), column}), "halcyon:argument:size");
  EXPECT_EQ(error({chars(u"a"), chars(u"")}), "halcyon:argument:size");
  EXPECT_EQ(error({scalar(1)}), "halcyon:argument:class");
  EXPECT_EQ(error({chars(u"a"), scalar(1)}), "halcyon:argument:class");
  EXPECT_EQ(error({}), "halcyon:argument:count");
  EXPECT_EQ(error({chars(u"a"), chars(u"b"), chars(u"c")}), "halcyon:argument:count");
  EXPECT_EQ(errorOf(server, "/text/split", 2, {chars(u"a")}), "halcyon:argument:count");
}

}  // namespace
}  // namespace hcy::test
