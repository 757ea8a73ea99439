// SPDX-License-Identifier: Apache-2.0
//
// Shapes of too many elements, and what an array holds after its change was refused.

#include <cstdint>

#include "abi/array_kinds.h"
#include "support/exception_checks.h"

namespace hcy::abi {
namespace {

using test::expectPositiveOverflow;

constexpr std::size_t largest = 2147483647;
const Shape twoByTwo = {2, 2};

class ShapeLimit : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ShapeLimit, testing::ValuesIn(allKinds()), kindName);

TEST_P(ShapeLimit, RefusesRowsAndKeepsTheElements) {
  for (const std::size_t m : {largest, largest / 2 + 1, std::size_t{1} << 63, SIZE_MAX}) {
    const Array array = filledMatrix(GetParam(), 2, 2);
    const void* const data = dataOf(array);
    expectPositiveOverflow([&] { hcySetM(array, m); });
    EXPECT_EQ(shapeOf(array), (Shape{m, 2}));
    EXPECT_EQ(dataOf(array), data);
    hcySetM(array, 2);
    EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
  }
}

TEST_P(ShapeLimit, RefusesColumnsAndKeepsTheElements) {
  for (const std::size_t n : {largest, largest / 2 + 1, std::size_t{1} << 63, SIZE_MAX}) {
    const Array array = filledMatrix(GetParam(), 2, 2);
    expectPositiveOverflow([&] { hcySetN(array, n); });
    EXPECT_EQ(shapeOf(array), (Shape{2, n}));
    hcySetN(array, 2);
    EXPECT_EQ(shapeOf(array), (Shape{2, 2}));
    EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
  }
}

TEST_P(ShapeLimit, OfDimensionsIsAResultAndKeepsTheElements) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const Shape huge = {largest, largest, largest};
  EXPECT_EQ(hcySetDimensions(array, huge.data(), huge.size()), 1);
  EXPECT_EQ(shapeOf(array), huge);
  EXPECT_EQ(hcySetDimensions(array, twoByTwo.data(), twoByTwo.size()), 0);
  EXPECT_EQ(shapeOf(array), twoByTwo);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST_P(ShapeLimit, OfOneDimensionIsAResultToo) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  const std::size_t length = largest + 1;
  EXPECT_EQ(hcySetDimensions(array, &length, 1), 1);
  EXPECT_EQ(shapeOf(array), (Shape{length, 1}));
  EXPECT_EQ(hcySetDimensions(array, twoByTwo.data(), twoByTwo.size()), 0);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST_P(ShapeLimit, LeavesAnArrayThatCanBeCopiedAndDestroyed) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  expectPositiveOverflow([&] { hcySetM(array, largest); });
  const Array copy = hcyDuplicateArray(array);
  EXPECT_EQ(shapeOf(copy), (Shape{largest, 2}));
  EXPECT_EQ(hcyGetClassID(copy), GetParam().id);
}

TEST_P(ShapeLimit, DoesNotHoldForADimensionBesideAZero) {
  const Array array = createMatrix(GetParam(), 0, 0);
  hcySetM(array, SIZE_MAX);
  EXPECT_EQ(shapeOf(array), (Shape{SIZE_MAX, 0}));
  EXPECT_TRUE(hcyIsEmpty(array));
  const Shape shape = {largest + 1, 0, SIZE_MAX};
  EXPECT_EQ(hcySetDimensions(array, shape.data(), shape.size()), 0);
  EXPECT_EQ(shapeOf(array), shape);
  if (GetParam().isSparse) return;
  hcySetM(array, 0);
  hcySetN(array, SIZE_MAX);
  EXPECT_EQ(hcyGetN(array), SIZE_MAX);
}

TEST(StructShapeLimit, CountsFieldsTimesElements) {
  const Array array = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  expectPositiveOverflow([&] { hcySetM(array, largest / 2 + 1); });
  EXPECT_EQ(hcyGetM(array), largest / 2 + 1);
  EXPECT_TRUE(Array(hcyGetField(array, 0, "second")));
}

TEST(SparseShapeLimit, HoldsForTheColumnsPlusOne) {
  for (const std::size_t n : {largest, largest + 1, SIZE_MAX}) {
    const Array array = hcyCreateSparse(0, 2, 0, hcyREAL);
    const std::size_t* const starts = hcyGetJc(array);
    expectPositiveOverflow([&] { hcySetN(array, n); });
    EXPECT_EQ(hcyGetN(array), n);
    EXPECT_EQ(hcyGetJc(array), starts);
    hcySetN(array, 2);
    EXPECT_EQ(hcyGetJc(array)[2], 0U);
  }
}

TEST(SparseShapeLimit, OfDimensionsIsAResult) {
  const ArrayKind kind = {hcyLOGICAL_CLASS, true};
  const Array array = filledMatrix(kind, 2, 2);
  hcyGetJc(array)[2] = 4;
  const Shape shape = {0, largest};
  EXPECT_EQ(hcySetDimensions(array, shape.data(), shape.size()), 1);
  EXPECT_EQ(shapeOf(array), shape);
  EXPECT_EQ(hcySetDimensions(array, twoByTwo.data(), twoByTwo.size()), 0);
  EXPECT_EQ(valuesOf(array), filling(kind, 4));
  EXPECT_EQ(hcyGetJc(array)[2], 4U);
}

TEST(AddedField, ThatDoesNotFitChangesNothing) {
  const Array array = hcyCreateStructMatrix(largest, largest, 0, nullptr);
  EXPECT_EQ(hcyAddField(array, "huge"), -1);
  EXPECT_EQ(hcyGetNumberOfFields(array), 0);
  EXPECT_EQ(shapeOf(array), (Shape{largest, largest}));
}

TEST(NumberOfElements, ThatDoesNotFitReadsAsTheLargestSize) {
  const Array array = hcyCreateStructMatrix(largest, largest, 0, nullptr);
  expectPositiveOverflow([&] { hcySetM(array, SIZE_MAX); });
  EXPECT_EQ(hcyGetNumberOfElements(array), SIZE_MAX);
}

}  // namespace
}  // namespace hcy::abi
