// SPDX-License-Identifier: Apache-2.0
//
// Fields of struct arrays: names, numbers and elements.

#include <climits>
#include <cstdint>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

// A struct array whose field values tell their element and field: 10 * index + number.
Array numberedStruct(std::size_t m, std::size_t n) {
  Array array = hcyCreateStructMatrix(m, n, fieldCount, fieldNames);
  for (std::size_t i = 0; i < m * n; ++i) {
    for (int field = 0; field < fieldCount; ++field) {
      hcySetFieldByNumber(array, i, field,
                          Array(hcyCreateDoubleScalar(10.0 * static_cast<double>(i) + field)));
    }
  }
  return array;
}

double fieldAt(const hcyArray* array, std::size_t index, const char* name) {
  return hcyGetScalar(Array(hcyGetField(array, index, name)));
}

class Field : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Field, testing::ValuesIn(allKinds()), kindName);

TEST_P(Field, HoldsAnArrayOfAnyKind) {
  const Array array = hcyCreateStructMatrix(2, 2, fieldCount, fieldNames);
  hcySetField(array, 3, "first", filledMatrix(GetParam(), 3, 2));
  const Array element = hcyGetField(array, 3, "first");
  ASSERT_TRUE(element);
  EXPECT_EQ(hcyGetClassID(element), GetParam().id);
  EXPECT_EQ(hcyIsSparse(element), GetParam().isSparse);
  EXPECT_EQ(shapeOf(element), (Shape{3, 2}));
  EXPECT_EQ(valuesOf(element), filling(GetParam(), 6));
}

TEST_P(Field, IsFoundInStructArraysOnly) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const bool isStruct = GetParam().id == hcySTRUCT_CLASS;
  EXPECT_EQ(hcyGetNumberOfFields(array), isStruct ? 2 : 0);
  EXPECT_EQ(hcyGetFieldNameByNumber(array, 0) != nullptr, isStruct);
  EXPECT_EQ(hcyGetFieldNumber(array, "second"), isStruct ? 1 : -1);
  EXPECT_EQ(static_cast<bool>(Array(hcyGetField(array, 1, "first"))), isStruct);
  EXPECT_EQ(static_cast<bool>(Array(hcyGetFieldByNumber(array, 1, 0))), isStruct);
}

TEST_P(Field, IsNotMadeInAnArrayThatIsNoStruct) {
  if (GetParam().id == hcySTRUCT_CLASS) return;
  const Array array = filledMatrix(GetParam(), 2, 2);
  const Array value = hcyCreateDoubleScalar(9.0);
  hcySetField(array, 0, "first", value);
  hcySetFieldByNumber(array, 0, 0, value);
  EXPECT_EQ(hcyAddField(array, "first"), -1);
  hcyRemoveField(array, 0);
  EXPECT_EQ(hcyGetNumberOfFields(array), 0);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST(FieldNumber, IsTheFirstNameEqualByteForByte) {
  const char* const names[] = {"x", "xy", "", "xy", "X"};
  const Array array = hcyCreateStructMatrix(1, 1, 5, names);
  EXPECT_EQ(hcyGetFieldNumber(array, "x"), 0);
  EXPECT_EQ(hcyGetFieldNumber(array, "xy"), 1);
  EXPECT_EQ(hcyGetFieldNumber(array, ""), 2);
  EXPECT_EQ(hcyGetFieldNumber(array, "X"), 4);
  EXPECT_EQ(hcyGetFieldNumber(array, "Xy"), -1);
  EXPECT_EQ(hcyGetFieldNumber(array, "xyz"), -1);
  EXPECT_EQ(hcyGetFieldNumber(array, nullptr), -1);
}

TEST(FieldNumber, TellsTheCaseOfLetters) {
  const char* const name = "x";
  EXPECT_EQ(hcyGetFieldNumber(Array(hcyCreateStructMatrix(1, 1, 1, &name)), "X"), -1);
}

TEST(FieldName, IsGivenForTheNumbersThatExist) {
  const Array array = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  EXPECT_STREQ(hcyGetFieldNameByNumber(array, 0), "first");
  EXPECT_STREQ(hcyGetFieldNameByNumber(array, 1), "second");
  for (const int n : {-1, 2, 3, INT_MIN, INT_MAX}) {
    EXPECT_EQ(hcyGetFieldNameByNumber(array, n), nullptr) << n;
  }
}

TEST(FieldElement, BelongsToItsElementAndName) {
  const Array array = numberedStruct(2, 2);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(fieldAt(array, i, "first"), 10.0 * static_cast<double>(i));
    EXPECT_EQ(fieldAt(array, i, "second"), 10.0 * static_cast<double>(i) + 1);
    EXPECT_EQ(hcyGetScalar(Array(hcyGetFieldByNumber(array, i, 1))), fieldAt(array, i, "second"));
  }
}

TEST(FieldElement, ThatWasNeverSetReadsAsAnEmptyDouble) {
  const char* const name = "x";
  const Array array = hcyCreateStructMatrix(1, 1, 1, &name);
  const Array element = hcyGetField(array, 0, "x");
  ASSERT_TRUE(element);
  EXPECT_EQ(hcyGetClassID(element), hcyDOUBLE_CLASS);
  EXPECT_EQ(shapeOf(element), (Shape{0, 0}));
}

TEST(FieldElement, ThatWasNeverSetIsTheSameElementOnceItWasRead) {
  const Array array = hcyCreateStructMatrix(1, 2, fieldCount, fieldNames);
  const Array element = hcyGetField(array, 1, "second");
  hcySetM(element, 1);
  hcySetN(element, 1);
  *hcyGetPr(element) = 4.0;
  EXPECT_EQ(fieldAt(array, 1, "second"), 4.0);
  EXPECT_TRUE(hcyIsEmpty(Array(hcyGetField(array, 0, "second"))));
}

TEST(FieldElement, OfAnUnknownFieldIsNullAndNotSet) {
  const Array array = numberedStruct(1, 2);
  const Array value = hcyCreateDoubleScalar(99.0);
  for (const std::size_t index : {0U, 1U}) {
    for (const char* const name : {static_cast<const char*>(nullptr), "First", "", "third"}) {
      EXPECT_FALSE(Array(hcyGetField(array, index, name)));
      hcySetField(array, index, name, value);
    }
    for (const int n : {-1, 2, INT_MIN, INT_MAX}) {
      EXPECT_FALSE(Array(hcyGetFieldByNumber(array, index, n))) << n;
      hcySetFieldByNumber(array, index, n, value);
    }
  }
  for (const std::size_t index : {0U, 1U}) {
    EXPECT_EQ(fieldAt(array, index, "first"), 10.0 * static_cast<double>(index));
    EXPECT_EQ(fieldAt(array, index, "second"), 10.0 * static_cast<double>(index) + 1);
  }
}

TEST(FieldElement, BeyondTheElementsIsNullAndNotSet) {
  const Array array = numberedStruct(1, 2);
  const Array value = hcyCreateDoubleScalar(99.0);
  for (const std::size_t index : {std::size_t{2}, std::size_t{3}, SIZE_MAX / 2, SIZE_MAX}) {
    EXPECT_FALSE(Array(hcyGetField(array, index, "first"))) << index;
    EXPECT_FALSE(Array(hcyGetFieldByNumber(array, index, 0))) << index;
    hcySetField(array, index, "first", value);
    hcySetFieldByNumber(array, index, 1, value);
  }
  EXPECT_EQ(fieldAt(array, 1, "first"), 10.0);
  EXPECT_EQ(fieldAt(array, 1, "second"), 11.0);
}

TEST(FieldElement, OfAStructWithoutElementsIsNull) {
  const Array array = hcyCreateStructMatrix(0, 3, fieldCount, fieldNames);
  EXPECT_FALSE(Array(hcyGetField(array, 0, "first")));
  hcySetField(array, 0, "first", Array(hcyCreateDoubleScalar(1.0)));
  EXPECT_FALSE(Array(hcyGetField(array, 0, "first")));
}

TEST(FieldElement, ReadTwiceGivesTwoHandlesOverTheSameElement) {
  const Array array = numberedStruct(1, 1);
  const Array byName = hcyGetField(array, 0, "second");
  const Array byNumber = hcyGetFieldByNumber(array, 0, 1);
  EXPECT_NE(static_cast<hcyArray*>(byName), static_cast<hcyArray*>(byNumber));
  *hcyGetPr(byName) = 5.0;
  EXPECT_EQ(*hcyGetPr(byNumber), 5.0);
}

TEST(FieldElement, OfADuplicateNameIsThatOfTheFirst) {
  const char* const names[] = {"same", "same"};
  const Array array = hcyCreateStructMatrix(1, 1, 2, names);
  hcySetFieldByNumber(array, 0, 1, Array(hcyCreateDoubleScalar(7.0)));
  EXPECT_EQ(hcyGetScalar(Array(hcyGetFieldByNumber(array, 0, 0))), 7.0);
  EXPECT_EQ(hcyGetScalar(Array(hcyGetFieldByNumber(array, 0, 1))), 7.0);
}

}  // namespace
}  // namespace hcy::abi
