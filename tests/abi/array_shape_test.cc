// SPDX-License-Identifier: Apache-2.0
//
// Dimensions, and what becomes of the elements when they change.

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

// The first values of a filling, and zeros behind them up to the count.
std::vector<double> keptAndZeros(const ArrayKind& kind, std::size_t kept, std::size_t count) {
  std::vector<double> values = filling(kind, kept);
  values.resize(count, 0.0);
  return values;
}

class FullShape : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, FullShape, testing::ValuesIn(fullKinds()), kindName);

TEST_P(FullShape, IsReadDimensionByDimension) {
  const Array array = createArray(GetParam(), {2, 3, 4});
  EXPECT_EQ(hcyGetM(array), 2U);
  EXPECT_EQ(hcyGetN(array), 3U);
  EXPECT_EQ(hcyGetNumberOfDimensions(array), 3U);
  EXPECT_EQ(hcyGetDimensions(array)[2], 4U);
}

TEST_P(FullShape, GrowsByRowsWithZerosBehindTheOldElements) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  hcySetM(array, 3);
  EXPECT_EQ(shapeOf(array), (Shape{3, 2}));
  EXPECT_EQ(valuesOf(array), keptAndZeros(GetParam(), 4, 6));
}

TEST_P(FullShape, GrowsByColumnsWithZerosBehindTheOldElements) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  hcySetN(array, 5);
  EXPECT_EQ(shapeOf(array), (Shape{2, 5}));
  EXPECT_EQ(valuesOf(array), keptAndZeros(GetParam(), 4, 10));
}

TEST_P(FullShape, ShrinksFromTheEnd) {
  const Array array = filledMatrix(GetParam(), 4, 2);
  hcySetM(array, 3);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
  hcySetN(array, 1);
  EXPECT_EQ(shapeOf(array), (Shape{3, 1}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 3));
}

TEST_P(FullShape, ForgetsElementsThatItLost) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  hcySetN(array, 1);
  hcySetN(array, 3);
  EXPECT_EQ(valuesOf(array), keptAndZeros(GetParam(), 2, 6));
}

TEST_P(FullShape, OfNoElementsAndBackIsAllZeros) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  hcySetM(array, 0);
  EXPECT_EQ(shapeOf(array), (Shape{0, 2}));
  EXPECT_TRUE(hcyIsEmpty(array));
  EXPECT_EQ(dataOf(array), nullptr);
  hcySetM(array, 2);
  EXPECT_EQ(valuesOf(array), std::vector<double>(4, 0.0));
}

TEST_P(FullShape, OfThreeDimensionsChangesByTheFirstTwo) {
  const Array array = createArray(GetParam(), {2, 1, 3});
  fill(GetParam(), array);
  hcySetM(array, 3);
  hcySetN(array, 2);
  EXPECT_EQ(shapeOf(array), (Shape{3, 2, 3}));
  EXPECT_EQ(valuesOf(array), keptAndZeros(GetParam(), 6, 18));
}

TEST_P(FullShape, IsReplacedByAnyDimensions) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  const Shape shape = {1, 2, 2, 2};
  EXPECT_EQ(hcySetDimensions(array, shape.data(), shape.size()), 0);
  EXPECT_EQ(shapeOf(array), shape);
  EXPECT_EQ(valuesOf(array), keptAndZeros(GetParam(), 6, 8));
  const Shape smaller = {2, 2};
  EXPECT_EQ(hcySetDimensions(array, smaller.data(), smaller.size()), 0);
  EXPECT_EQ(shapeOf(array), smaller);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST_P(FullShape, OfOneDimensionBecomesAColumn) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  const std::size_t length = 4;
  EXPECT_EQ(hcySetDimensions(array, &length, 1), 0);
  EXPECT_EQ(shapeOf(array), (Shape{4, 1}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

TEST_P(FullShape, CanBeSetFromItsOwnDimensions) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  EXPECT_EQ(hcySetDimensions(array, hcyGetDimensions(array), 2), 0);
  EXPECT_EQ(shapeOf(array), (Shape{2, 3}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
}

class AnyShape : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, AnyShape, testing::ValuesIn(allKinds()), kindName);

TEST_P(AnyShape, IsUnchangedWhenNoDimensionsAreGiven) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  EXPECT_EQ(hcySetDimensions(array, nullptr, 0), 1);
  EXPECT_EQ(shapeOf(array), (Shape{2, 3}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
}

TEST_P(AnyShape, TakesTheSameValueAgain) {
  const Array array = filledMatrix(GetParam(), 2, 3);
  hcySetM(array, 2);
  hcySetN(array, 3);
  EXPECT_EQ(shapeOf(array), (Shape{2, 3}));
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
}

class ComplexShape : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ComplexShape, testing::ValuesIn(fullNumericKinds()), kindName);

TEST_P(ComplexShape, ChangesBothParts) {
  const Array array = filledComplexMatrix(GetParam(), 2, 2);
  hcySetN(array, 3);
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 2, 3, 4, 0, 0}));
  EXPECT_EQ(imaginaryOf(array), (std::vector<double>{11, 12, 13, 14, 0, 0}));
  hcySetM(array, 1);
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(imaginaryOf(array), (std::vector<double>{11, 12, 13}));
  EXPECT_TRUE(hcyIsComplex(array));
}

TEST_P(ComplexShape, OfNoElementsAndBackIsZeroAndStaysComplex) {
  const Array array = filledComplexMatrix(GetParam(), 2, 2);
  hcySetM(array, 0);
  EXPECT_EQ(hcyGetImagData(array), nullptr);
  hcySetM(array, 2);
  EXPECT_TRUE(hcyIsComplex(array));
  EXPECT_EQ(valuesOf(array), std::vector<double>(4, 0.0));
  // Where they lie in the message they are lost; the buffers of the 16-bit classes come back.
  const bool haveComeBack = GetParam().facts().storage == ElementStorage::Widened;
  EXPECT_EQ(imaginaryOf(array), std::vector<double>(haveComeBack ? 4 : 0, 0.0));
}

TEST_P(ComplexShape, LeavesARealArrayReal) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  hcySetN(array, 3);
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(hcyGetImagData(array), nullptr);
}

TEST(SingleSubscript, CountsDownTheColumns) {
  const Array array = hcyCreateDoubleMatrix(3, 4, hcyREAL);
  const std::size_t subs[] = {2, 1};
  EXPECT_EQ(hcyCalcSingleSubscript(array, 2, subs), 5U);
}

TEST(SingleSubscript, ReachesEveryElementOnce) {
  const std::size_t dims[] = {2, 3, 4, 5};
  const Array array = hcyCreateCellArray(4, dims);
  std::size_t expected = 0;
  for (std::size_t l = 0; l < 5; ++l) {
    for (std::size_t k = 0; k < 4; ++k) {
      for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 2; ++i) {
          const std::size_t subs[] = {i, j, k, l};
          EXPECT_EQ(hcyCalcSingleSubscript(array, 4, subs), expected++);
        }
      }
    }
  }
}

TEST(SingleSubscript, TakesFewerSubscriptsThanDimensions) {
  const std::size_t dims[] = {2, 3, 4};
  const Array array = hcyCreateLogicalArray(3, dims);
  const std::size_t subs[] = {1, 2, 3};
  EXPECT_EQ(hcyCalcSingleSubscript(array, 0, nullptr), 0U);
  EXPECT_EQ(hcyCalcSingleSubscript(array, 1, subs), 1U);
  EXPECT_EQ(hcyCalcSingleSubscript(array, 2, subs), 5U);
  EXPECT_EQ(hcyCalcSingleSubscript(array, 3, subs), 23U);
}

TEST(SingleSubscript, IsNotCheckedAgainstTheDimensions) {
  const Array array = hcyCreateDoubleMatrix(3, 4, hcyREAL);
  const std::size_t subs[] = {7, 10};
  EXPECT_EQ(hcyCalcSingleSubscript(array, 2, subs), 37U);
}

TEST(SingleSubscript, DoesNotReadSubscriptsBeyondTheDimensions) {
  const Array array = hcyCreateDoubleMatrix(3, 4, hcyREAL);
  const std::size_t subs[] = {1, 1};
  EXPECT_EQ(hcyCalcSingleSubscript(array, 3, subs), 4U);
}

}  // namespace
}  // namespace hcy::abi
