// SPDX-License-Identifier: Apache-2.0
//
// Row indices, column starts and room for stored elements.

#include <algorithm>
#include <cstdint>
#include <span>

#include "abi/array_kinds.h"
#include "support/exception_checks.h"

namespace hcy::abi {
namespace {

using test::expectPositiveOverflow;

using Indices = std::vector<std::size_t>;

Indices rowsOf(const hcyArray* array) {
  return {hcyGetIr(array), hcyGetIr(array) + hcyGetNzmax(array)};
}
Indices startsOf(const hcyArray* array) {
  return {hcyGetJc(array), hcyGetJc(array) + hcyGetN(array) + 1};
}

hcyArray* createSparse(const ArrayKind& kind, std::size_t m, std::size_t n, std::size_t nzmax) {
  return kind.id == hcyDOUBLE_CLASS ? hcyCreateSparse(m, n, nzmax, hcyREAL)
                                    : hcyCreateSparseLogicalMatrix(m, n, nzmax);
}

// A 3-by-3 array of two stored elements, at (2, 0) and (1, 2).
Array exampleOf(const ArrayKind& kind) {
  Array array = createSparse(kind, 3, 3, 2);
  std::ranges::copy(Indices{2, 1}, hcyGetIr(array));
  std::ranges::copy(Indices{0, 1, 1, 2}, hcyGetJc(array));
  setValue(array, 0, 1.0);
  setValue(array, 1, 1.0);
  return array;
}

class Sparse : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Sparse, testing::ValuesIn(sparseKinds()), kindName);

TEST_P(Sparse, HasRoomForWhatWasAskedAndAStartForEachColumn) {
  const Array array = createSparse(GetParam(), 3, 4, 5);
  EXPECT_EQ(hcyGetNzmax(array), 5U);
  EXPECT_EQ(rowsOf(array), Indices(5, 0));
  EXPECT_EQ(startsOf(array), Indices(5, 0));
  EXPECT_EQ(valuesOf(array), std::vector<double>(5, 0.0));
}

TEST_P(Sparse, OfNoStoredElementsHasColumnStartsOnly) {
  const Array array = createSparse(GetParam(), 3, 4, 0);
  EXPECT_EQ(hcyGetNzmax(array), 0U);
  EXPECT_EQ(hcyGetIr(array), nullptr);
  EXPECT_EQ(dataOf(array), nullptr);
  EXPECT_EQ(startsOf(array), Indices(5, 0));
}

TEST_P(Sparse, MayHaveMoreRoomThanElements) {
  const Array array = createSparse(GetParam(), 1, 1, 9);
  EXPECT_EQ(hcyGetNzmax(array), 9U);
  EXPECT_EQ(valuesOf(array), std::vector<double>(9, 0.0));
}

TEST_P(Sparse, WithoutElementsTakesRoomAllTheSame) {
  const Array array = createSparse(GetParam(), 0, 0, 2);
  EXPECT_EQ(hcyGetNzmax(array), 2U);
  EXPECT_EQ(startsOf(array), Indices{0});
  EXPECT_EQ(valuesOf(array), std::vector<double>(2, 0.0));
}

TEST_P(Sparse, KeepsItsStoredElementsInALargerRoom) {
  const Array array = exampleOf(GetParam());
  hcySetNzmax(array, 4);
  EXPECT_EQ(rowsOf(array), (Indices{2, 1, 0, 0}));
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 1, 2}));
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 1, 0, 0}));
}

TEST_P(Sparse, LosesTheLastElementsInASmallerRoom) {
  const Array array = exampleOf(GetParam());
  hcySetNzmax(array, 1);
  EXPECT_EQ(rowsOf(array), Indices{2});
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 1, 2}));
  EXPECT_EQ(valuesOf(array), std::vector<double>{1});
}

TEST_P(Sparse, HasRoomForOneElementAtLeastOnceItIsSet) {
  const Array array = createSparse(GetParam(), 3, 3, 0);
  hcySetNzmax(array, 0);
  EXPECT_EQ(hcyGetNzmax(array), 1U);
  EXPECT_EQ(rowsOf(array), Indices{0});
  EXPECT_EQ(valuesOf(array), std::vector<double>{0});
}

TEST_P(Sparse, TakesRoomUpToItsNumberOfElements) {
  const Array array = createSparse(GetParam(), 3, 3, 2);
  hcySetNzmax(array, 10);
  EXPECT_EQ(hcyGetNzmax(array), 2U);
  hcySetNzmax(array, 9);
  EXPECT_EQ(hcyGetNzmax(array), 9U);
}

TEST_P(Sparse, WithoutElementsRefusesRoomButOne) {
  const Array array = createSparse(GetParam(), 0, 3, 2);
  hcySetNzmax(array, 1);
  EXPECT_EQ(hcyGetNzmax(array), 2U);
  hcySetNzmax(array, 0);
  EXPECT_EQ(hcyGetNzmax(array), 1U);
}

TEST_P(Sparse, RefusesRoomOverTheLimitAndStaysAsItWas) {
  const Array array = createSparse(GetParam(), 65536, 65536, 2);
  expectPositiveOverflow([&] { hcySetNzmax(array, std::size_t{1} << 32); });
  expectPositiveOverflow([&] { hcySetNzmax(array, std::size_t{1} << 31); });
  EXPECT_EQ(hcyGetNzmax(array), 2U);
  EXPECT_EQ(valuesOf(array), std::vector<double>(2, 0.0));
}

TEST_P(Sparse, GetsStartsForNewColumns) {
  const Array array = exampleOf(GetParam());
  hcySetN(array, 5);
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 1, 2, 0, 0}));
  EXPECT_EQ(rowsOf(array), (Indices{2, 1}));
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 1}));
}

TEST_P(Sparse, LosesStartsWithItsColumnsButNoElements) {
  const Array array = exampleOf(GetParam());
  hcySetN(array, 1);
  EXPECT_EQ(startsOf(array), (Indices{0, 1}));
  hcySetN(array, 3);
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 0, 0}));
  EXPECT_EQ(rowsOf(array), (Indices{2, 1}));
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 1}));
}

TEST_P(Sparse, KeepsItsStartsWhenRowsChange) {
  const Array array = exampleOf(GetParam());
  hcySetM(array, 1000);
  EXPECT_EQ(hcyGetM(array), 1000U);
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 1, 2}));
  EXPECT_EQ(rowsOf(array), (Indices{2, 1}));
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 1}));
}

TEST_P(Sparse, GetsStartsForTheSecondOfNewDimensions) {
  const Array array = exampleOf(GetParam());
  const Shape shape = {2, 4, 2};
  EXPECT_EQ(hcySetDimensions(array, shape.data(), shape.size()), 0);
  EXPECT_EQ(startsOf(array), (Indices{0, 1, 1, 2, 0}));
}

TEST_P(Sparse, IsCopiedWithItsIndices) {
  const Array array = exampleOf(GetParam());
  const Array copy = hcyDuplicateArray(array);
  hcyGetIr(array)[0] = 0;
  hcyGetJc(array)[1] = 0;
  EXPECT_TRUE(hcyIsSparse(copy));
  EXPECT_EQ(hcyGetClassID(copy), GetParam().id);
  EXPECT_EQ(rowsOf(copy), (Indices{2, 1}));
  EXPECT_EQ(startsOf(copy), (Indices{0, 1, 1, 2}));
  EXPECT_EQ(valuesOf(copy), (std::vector<double>{1, 1}));
}

TEST(ComplexSparse, HasImaginaryPartsInEveryRoom) {
  const Array array = hcyCreateSparse(3, 3, 2, hcyCOMPLEX);
  std::ranges::copy(std::vector<double>{5, 6}, hcyGetPi(array));
  hcySetNzmax(array, 3);
  EXPECT_EQ(imaginaryOf(array), (std::vector<double>{5, 6, 0}));
  hcySetNzmax(array, 1);
  EXPECT_EQ(imaginaryOf(array), std::vector<double>{5});
  EXPECT_EQ(valuesOf(array), std::vector<double>{0});
}

TEST(RealSparse, GetsNoImaginaryPartsWithMoreRoom) {
  const Array array = hcyCreateSparse(3, 3, 2, hcyREAL);
  hcySetNzmax(array, 5);
  EXPECT_EQ(hcyGetPi(array), nullptr);
}

TEST(ComplexSparse, OfNoElementsHasNoImaginaryParts) {
  const Array array = hcyCreateSparse(0, 3, 2, hcyCOMPLEX);
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(hcyGetPi(array), nullptr);
}

TEST(ComplexSparse, ThatNeverHeldImaginaryPartsGetsNone) {
  const Array array = hcyCreateSparse(3, 3, 0, hcyCOMPLEX);
  EXPECT_TRUE(hcyIsComplex(array));
  hcySetNzmax(array, 2);
  EXPECT_EQ(hcyGetPi(array), nullptr);
  EXPECT_EQ(valuesOf(array), std::vector<double>(2, 0.0));
}

class NotSparse : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NotSparse, testing::ValuesIn(fullKinds()), kindName);

TEST_P(NotSparse, HasNoIndicesAndNoRoom) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  EXPECT_EQ(hcyGetIr(array), nullptr);
  EXPECT_EQ(hcyGetJc(array), nullptr);
  EXPECT_EQ(hcyGetNzmax(array), SIZE_MAX);
  hcySetNzmax(array, 1);
  EXPECT_EQ(hcyGetNzmax(array), SIZE_MAX);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 4));
}

}  // namespace
}  // namespace hcy::abi
