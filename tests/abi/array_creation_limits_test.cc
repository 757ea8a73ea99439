// SPDX-License-Identifier: Apache-2.0
//
// Sizes beyond the library's signed 32-bit size. The arrays of these tests would take far more
// memory than there is, so a failure other than positive overflow shows that some was asked for.

#include <cstdint>
#include <string>
#include <vector>

#include "abi/array_kinds.h"
#include "support/exception_checks.h"

namespace hcy::abi {
namespace {

using test::expectPositiveOverflow;

constexpr std::size_t largest = 2147483647;

class CreationLimit : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, CreationLimit, testing::ValuesIn(allKinds()), kindName);

TEST_P(CreationLimit, RefusesADimensionOverTheLimit) {
  for (const std::size_t dimension : {largest + 1, std::size_t{1} << 32, SIZE_MAX}) {
    expectPositiveOverflow([&] { Array(createMatrix(GetParam(), dimension, 0)); });
    expectPositiveOverflow([&] { Array(createMatrix(GetParam(), 0, dimension)); });
  }
}

TEST_P(CreationLimit, AcceptsTheLargestDimensionOfAnEmptyArray) {
  const Array array = createMatrix(GetParam(), largest, 0);
  EXPECT_EQ(shapeOf(array), (Shape{largest, 0}));
}

class FullCreationLimit : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, FullCreationLimit, testing::ValuesIn(fullKinds()), kindName);

TEST_P(FullCreationLimit, RefusesMoreElementsBeforeAnythingIsAllocated) {
  expectPositiveOverflow([] { Array(createArray(GetParam(), {largest, largest})); });
  expectPositiveOverflow([] { Array(createArray(GetParam(), {largest, 1, 64})); });
  expectPositiveOverflow([] { Array(createArray(GetParam(), {65536, 65536, 65536, 65536})); });
}

TEST_P(FullCreationLimit, RefusesTheFirstCountBeyondIt) {
  expectPositiveOverflow([] { Array(createArray(GetParam(), {65536, 32768})); });
}

TEST_P(FullCreationLimit, RefusesADimensionOfAVectorWhereverItStands) {
  expectPositiveOverflow([] { Array(createArray(GetParam(), {largest + 1})); });
  expectPositiveOverflow([] { Array(createArray(GetParam(), {1, 0, largest + 1})); });
  expectPositiveOverflow([] { Array(createArray(GetParam(), {largest + 1, 0, 1})); });
}

class NumericCreationLimit : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NumericCreationLimit, testing::ValuesIn(fullNumericKinds()),
                         kindName);

TEST_P(NumericCreationLimit, IsTheSameForMatricesAndComplexArrays) {
  for (const hcyComplexity complexity : {hcyREAL, hcyCOMPLEX}) {
    expectPositiveOverflow(
        [&] { Array(hcyCreateNumericMatrix(largest, 64, GetParam().id, complexity)); });
    expectPositiveOverflow([&] { Array(createArray(GetParam(), {largest, 64}, complexity)); });
  }
}

TEST(MatrixCreationLimit, HoldsForEveryFunctionOfItsOwn) {
  expectPositiveOverflow([] { Array(hcyCreateDoubleMatrix(largest, 64, hcyREAL)); });
  expectPositiveOverflow([] { Array(hcyCreateLogicalMatrix(largest, 64)); });
  expectPositiveOverflow([] { Array(hcyCreateCellMatrix(largest, 64)); });
  expectPositiveOverflow([] { Array(hcyCreateStructMatrix(largest, 64, fieldCount, fieldNames)); });
}

TEST(TextCreationLimit, CountsTheLongestTextInEveryRow) {
  const std::string text(32768, 'x');
  const std::vector<const char*> texts(65536, text.c_str());
  expectPositiveOverflow([&] { Array(hcyCreateCharMatrixFromStrings(65536, texts.data())); });
}

TEST(StructCreationLimit, CountsFieldsTimesElements) {
  expectPositiveOverflow(
      [] { Array(hcyCreateStructMatrix(65536, 16384, fieldCount, fieldNames)); });
  const std::size_t dims[] = {65536, 16384};
  expectPositiveOverflow([&] { Array(hcyCreateStructArray(2, dims, fieldCount, fieldNames)); });
}

TEST(StructCreationLimit, RefusesAProductThatWouldWrapTo0) {
  const char* const names[] = {"a", "b", "c", "d"};
  const std::size_t dims[] = {std::size_t{1} << 30, std::size_t{1} << 30, 4};
  expectPositiveOverflow([&] { Array(hcyCreateStructArray(3, dims, 4, names)); });
}

TEST(StructCreationLimit, DoesNotHoldForElementsWithoutFields) {
  const Array array = hcyCreateStructMatrix(65536, 65536, 0, nullptr);
  EXPECT_EQ(hcyGetNumberOfElements(array), std::size_t{1} << 32);
}

TEST(SparseCreationLimit, DoesNotHoldForTheNumberOfElements) {
  const Array doubles = hcyCreateSparse(65536, 65536, 3, hcyCOMPLEX);
  EXPECT_EQ(hcyGetNumberOfElements(doubles), std::size_t{1} << 32);
  EXPECT_EQ(hcyGetNzmax(doubles), 3U);
  EXPECT_TRUE(hcyIsComplex(doubles));
  const Array logicals = hcyCreateSparseLogicalMatrix(65536, 65536, 3);
  EXPECT_EQ(hcyGetNumberOfElements(logicals), std::size_t{1} << 32);
}

TEST(SparseCreationLimit, HoldsForTheStoredElements) {
  for (const std::size_t nzmax : {largest + 1, std::size_t{1} << 40, SIZE_MAX}) {
    expectPositiveOverflow([&] { Array(hcyCreateSparse(65536, 65536, nzmax, hcyREAL)); });
    expectPositiveOverflow([&] { Array(hcyCreateSparse(65536, 65536, nzmax, hcyCOMPLEX)); });
    expectPositiveOverflow([&] { Array(hcyCreateSparseLogicalMatrix(65536, 65536, nzmax)); });
  }
}

TEST(SparseCreationLimit, HoldsForTheColumnsPlusOne) {
  expectPositiveOverflow([] { Array(hcyCreateSparse(1, largest, 0, hcyREAL)); });
  expectPositiveOverflow([] { Array(hcyCreateSparseLogicalMatrix(0, largest, 0)); });
  expectPositiveOverflow([] { Array(hcyCreateSparse(1, largest, largest, hcyREAL)); });
  expectPositiveOverflow([] { Array(hcyCreateSparse(1, largest - 1, largest + 1, hcyREAL)); });
}

}  // namespace
}  // namespace hcy::abi
