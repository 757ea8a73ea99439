// SPDX-License-Identifier: Apache-2.0
//
// Elements of cell arrays.

#include <cstdint>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

class Cell : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Cell, testing::ValuesIn(allKinds()), kindName);

TEST_P(Cell, HoldsAnArrayOfAnyKind) {
  const Array cell = hcyCreateCellMatrix(2, 2);
  hcySetCell(cell, 3, filledMatrix(GetParam(), 3, 2));
  const Array element = hcyGetCell(cell, 3);
  ASSERT_TRUE(element);
  EXPECT_EQ(hcyGetClassID(element), GetParam().id);
  EXPECT_EQ(hcyIsSparse(element), GetParam().isSparse);
  EXPECT_EQ(shapeOf(element), (Shape{3, 2}));
  EXPECT_EQ(valuesOf(element), filling(GetParam(), 6));
}

TEST_P(Cell, HoldsAnArrayWithoutElements) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, Array(createMatrix(GetParam(), 0, 4)));
  const Array element = hcyGetCell(cell, 0);
  EXPECT_EQ(hcyGetClassID(element), GetParam().id);
  EXPECT_EQ(shapeOf(element), (Shape{0, 4}));
}

TEST_P(Cell, HoldsBothPartsOfAComplexArray) {
  if (!GetParam().isNumeric()) return;
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, filledComplexMatrix(GetParam(), 1, 3));
  const Array element = hcyGetCell(cell, 0);
  EXPECT_TRUE(hcyIsComplex(element));
  EXPECT_EQ(valuesOf(element), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(imaginaryOf(element), (std::vector<double>{11, 12, 13}));
}

TEST_P(Cell, IsFoundInCellArraysOnly) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const bool isCell = GetParam().id == hcyCELL_CLASS;
  EXPECT_EQ(static_cast<bool>(Array(hcyGetCell(array, 1))), isCell);
  hcySetCell(array, 1, Array(hcyCreateDoubleScalar(9.0)));
  if (!isCell) {
    EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
  }
}

TEST(CellIndex, RefusesWhatIsNotBelowTheNumberOfElements) {
  const Array cell = hcyCreateCellMatrix(2, 3);
  for (const std::size_t index : {std::size_t{6}, std::size_t{7}, SIZE_MAX}) {
    EXPECT_FALSE(Array(hcyGetCell(cell, index))) << index;
    hcySetCell(cell, index, Array(hcyCreateDoubleScalar(1.0)));
  }
  EXPECT_TRUE(Array(hcyGetCell(cell, 5)));
  EXPECT_EQ(valuesOf(cell), std::vector<double>(6, 0.0));
}

TEST(CellIndex, RefusesEverythingWithoutElements) {
  const Array cell = hcyCreateCellMatrix(0, 3);
  EXPECT_FALSE(Array(hcyGetCell(cell, 0)));
  hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
  EXPECT_FALSE(Array(hcyGetCell(cell, 0)));
}

TEST(CellIndex, IsLinear) {
  const std::size_t dims[] = {2, 2, 2};
  const Array cell = hcyCreateCellArray(3, dims);
  const std::size_t subs[] = {1, 0, 1};
  hcySetCell(cell, hcyCalcSingleSubscript(cell, 3, subs), Array(hcyCreateDoubleScalar(3.0)));
  EXPECT_EQ(valuesOf(cell), (std::vector<double>{0, 0, 0, 0, 0, 3, 0, 0}));
}

TEST(CellElement, ReadTwiceGivesTwoHandlesOverTheSameElement) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
  const Array first = hcyGetCell(cell, 0);
  const Array second = hcyGetCell(cell, 0);
  EXPECT_NE(static_cast<hcyArray*>(first), static_cast<hcyArray*>(second));
  *hcyGetPr(first) = 2.0;
  EXPECT_EQ(*hcyGetPr(second), 2.0);
  EXPECT_EQ(valueAt(cell, 0), 2.0);
}

TEST(CellElement, OutlivesTheHandlesOverIt) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
  hcyDestroyArray(hcyGetCell(cell, 0));
  hcyDestroyArray(hcyGetCell(cell, 0));
  EXPECT_EQ(valueAt(cell, 0), 1.0);
}

TEST(CellElement, ThatWasNeverSetIsTheSameElementOnceItWasRead) {
  const Array cell = hcyCreateCellMatrix(2, 1);
  const Array first = hcyGetCell(cell, 0);
  hcySetDimensions(first, Shape{1, 1}.data(), 2);
  *hcyGetPr(first) = 4.0;
  EXPECT_EQ(valuesOf(cell), (std::vector<double>{4, 0}));
  EXPECT_EQ(shapeOf(Array(hcyGetCell(cell, 1))), (Shape{0, 0}));
}

TEST(CellElement, IsReplaced) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
  const Array before = hcyGetCell(cell, 0);
  hcySetCell(cell, 0, Array(hcyCreateString("two")));
  EXPECT_TRUE(hcyIsChar(Array(hcyGetCell(cell, 0))));
  EXPECT_EQ(*hcyGetPr(before), 1.0);
}

TEST(CellElement, CanBeStoredOverItself) {
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, Array(hcyCreateDoubleScalar(1.0)));
  hcySetCell(cell, 0, Array(hcyGetCell(cell, 0)));
  EXPECT_EQ(valueAt(cell, 0), 1.0);
}

TEST(CellElement, NestsToAnyDepth) {
  Array inner = hcyCreateDoubleScalar(42.0);
  for (int depth = 0; depth < 50; ++depth) {
    Array outer = hcyCreateCellMatrix(1, 1);
    hcySetCell(outer, 0, inner);
    inner = std::move(outer);
  }
  Array found = hcyDuplicateArray(inner);
  for (int depth = 0; depth < 50; ++depth) found = Array(hcyGetCell(found, 0));
  EXPECT_EQ(hcyGetScalar(found), 42.0);
}

}  // namespace
}  // namespace hcy::abi
