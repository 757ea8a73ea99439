// SPDX-License-Identifier: Apache-2.0
//
// Char arrays made from texts.

#include <cstdint>
#include <string>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

using CodeUnits = std::vector<std::uint16_t>;

CodeUnits codeUnitsOf(const hcyArray* array) {
  const std::uint16_t* const units = hcyGetChars(array);
  return {units, units + hcyGetNumberOfElements(array)};
}

// A byte 0x80 to 0xFF becomes 0xFF80 to 0xFFFF.
std::uint16_t extended(int byte) {
  return static_cast<std::uint16_t>(byte < 0x80 ? byte : 0xFF00 + byte);
}

TEST(NewString, IsARowOfCodeUnits) {
  const Array array = hcyCreateString("hello");
  EXPECT_EQ(hcyGetClassID(array), hcyCHAR_CLASS);
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(shapeOf(array), (Shape{1, 5}));
  EXPECT_EQ(codeUnitsOf(array), (CodeUnits{'h', 'e', 'l', 'l', 'o'}));
}

TEST(NewString, OfTheEmptyTextIsZeroByZero) {
  const Array array = hcyCreateString("");
  EXPECT_EQ(hcyGetClassID(array), hcyCHAR_CLASS);
  EXPECT_EQ(shapeOf(array), (Shape{0, 0}));
  EXPECT_EQ(hcyGetChars(array), nullptr);
}

TEST(NewString, TakesUtf8ByteForByte) {
  EXPECT_EQ(codeUnitsOf(Array(hcyCreateString("\xC3\xA9"))), (CodeUnits{0xFFC3, 0xFFA9}));
}

TEST(NewString, SignExtendsEveryByteAtEveryLength) {
  std::string text;
  CodeUnits expected;
  for (int length = 1; length <= 300; ++length) {
    const int byte = (length - 1) % 255 + 1;
    text.push_back(static_cast<char>(byte));
    expected.push_back(extended(byte));
    const Array array = hcyCreateString(text.c_str());
    ASSERT_EQ(shapeOf(array), (Shape{1, text.size()}));
    ASSERT_EQ(codeUnitsOf(array), expected);
  }
}

TEST(NewCharMatrix, HasATextInEachRowPaddedWithNul) {
  const char* const texts[] = {"ab", "c"};
  const Array array = hcyCreateCharMatrixFromStrings(2, texts);
  EXPECT_EQ(hcyGetClassID(array), hcyCHAR_CLASS);
  EXPECT_EQ(shapeOf(array), (Shape{2, 2}));
  EXPECT_EQ(codeUnitsOf(array), (CodeUnits{'a', 'c', 'b', 0}));
}

TEST(NewCharMatrix, IsAsWideAsTheLongestTextWhereverItStands) {
  const char* const texts[] = {"", "xyz", "q"};
  const Array array = hcyCreateCharMatrixFromStrings(3, texts);
  EXPECT_EQ(shapeOf(array), (Shape{3, 3}));
  EXPECT_EQ(codeUnitsOf(array), (CodeUnits{0, 'x', 'q', 0, 'y', 0, 0, 'z', 0}));
}

TEST(NewCharMatrix, SignExtendsBytes) {
  const char* const texts[] = {"\x7F\x80", "\xFF"};
  const Array array = hcyCreateCharMatrixFromStrings(2, texts);
  EXPECT_EQ(codeUnitsOf(array), (CodeUnits{0x7F, 0xFFFF, 0xFF80, 0}));
}

TEST(NewCharMatrix, OfNoTextsIsZeroByZero) {
  const Array array = hcyCreateCharMatrixFromStrings(0, nullptr);
  EXPECT_EQ(hcyGetClassID(array), hcyCHAR_CLASS);
  EXPECT_EQ(shapeOf(array), (Shape{0, 0}));
}

TEST(NewCharMatrix, OfEmptyTextsHasNoColumns) {
  const char* const texts[] = {"", ""};
  EXPECT_EQ(shapeOf(Array(hcyCreateCharMatrixFromStrings(2, texts))), (Shape{2, 0}));
}

}  // namespace
}  // namespace hcy::abi
