// SPDX-License-Identifier: Apache-2.0
//
// Destroying, duplicating and freeing.

#include <cstdlib>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

TEST(DestroyedArray, MayBeNull) { hcyDestroyArray(nullptr); }

TEST(FreedMemory, MayBeNull) { hcyFree(nullptr); }

TEST(FreedMemory, MayComeFromMalloc) { hcyFree(std::malloc(16)); }

class Duplicate : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Duplicate, testing::ValuesIn(allKinds()), kindName);

TEST_P(Duplicate, HasClassShapeAndContents) {
  const Array array = filledMatrix(GetParam(), 3, 2);
  const Array copy = hcyDuplicateArray(array);
  ASSERT_TRUE(copy);
  EXPECT_NE(static_cast<hcyArray*>(copy), static_cast<hcyArray*>(array));
  EXPECT_EQ(hcyGetClassID(copy), GetParam().id);
  EXPECT_EQ(hcyIsSparse(copy), GetParam().isSparse);
  EXPECT_EQ(shapeOf(copy), (Shape{3, 2}));
  EXPECT_EQ(valuesOf(copy), filling(GetParam(), 6));
  EXPECT_FALSE(hcyIsComplex(copy));
}

TEST_P(Duplicate, HasBothPartsOfAComplexArray) {
  if (!GetParam().isNumeric()) return;
  const Array copy = hcyDuplicateArray(filledComplexMatrix(GetParam(), 3, 1));
  EXPECT_TRUE(hcyIsComplex(copy));
  EXPECT_EQ(valuesOf(copy), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(imaginaryOf(copy), (std::vector<double>{11, 12, 13}));
}

TEST_P(Duplicate, OfAComplexArrayThatLostItsElementsIsReal) {
  if (!GetParam().isNumeric() || GetParam().isSparse) return;
  const Array array = filledComplexMatrix(GetParam(), 2, 2);
  hcySetM(array, 0);
  EXPECT_TRUE(hcyIsComplex(array));
  EXPECT_FALSE(hcyIsComplex(Array(hcyDuplicateArray(array))));
}

TEST_P(Duplicate, IsNotReachedByLaterChanges) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const Array copy = hcyDuplicateArray(array);
  setValue(array, 0, 0.0);
  hcySetN(array, 1);
  EXPECT_EQ(shapeOf(copy), (Shape{2, 2}));
  EXPECT_EQ(valuesOf(copy), filling(GetParam(), 4));
}

TEST_P(Duplicate, DoesNotReachTheOriginal) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const Array copy = hcyDuplicateArray(array);
  setValue(copy, 0, 0.0);
  hcySetN(copy, 1);
  EXPECT_EQ(shapeOf(array), (Shape{2, 2}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST_P(Duplicate, OutlivesTheOriginal) {
  Array array = filledMatrix(GetParam(), 2, 2);
  const Array copy = hcyDuplicateArray(array);
  array.destroy();
  EXPECT_EQ(valuesOf(copy), filling(GetParam(), 4));
}

TEST_P(Duplicate, OfAResizedArrayIsResized) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  if (GetParam().isSparse) return;
  hcySetN(array, 3);
  EXPECT_EQ(valuesOf(Array(hcyDuplicateArray(array))), valuesOf(array));
  hcySetN(array, 1);
  EXPECT_EQ(valuesOf(Array(hcyDuplicateArray(array))), filling(GetParam(), 2));
  hcySetN(array, 0);
  EXPECT_EQ(shapeOf(Array(hcyDuplicateArray(array))), (Shape{2, 0}));
}

TEST_P(Duplicate, OfAnArrayWithoutElementsHasNone) {
  const Array copy = hcyDuplicateArray(Array(createMatrix(GetParam(), 0, 3)));
  EXPECT_EQ(hcyGetClassID(copy), GetParam().id);
  EXPECT_EQ(shapeOf(copy), (Shape{0, 3}));
}

TEST(DuplicateStruct, HasTheFieldNames) {
  const Array copy = hcyDuplicateArray(Array(hcyCreateStructMatrix(0, 0, fieldCount, fieldNames)));
  ASSERT_EQ(hcyGetNumberOfFields(copy), 2);
  EXPECT_STREQ(hcyGetFieldNameByNumber(copy, 1), "second");
}

TEST(DuplicateCell, HasEmptyDoublesWhereNothingWasSet) {
  const Array copy = hcyDuplicateArray(Array(hcyCreateCellMatrix(1, 2)));
  const Array element = hcyGetCell(copy, 1);
  EXPECT_EQ(hcyGetClassID(element), hcyDOUBLE_CLASS);
  EXPECT_EQ(shapeOf(element), (Shape{0, 0}));
}

}  // namespace
}  // namespace hcy::abi
