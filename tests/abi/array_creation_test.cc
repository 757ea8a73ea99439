// SPDX-License-Identifier: Apache-2.0
//
// Class, shape, complexity and contents of new arrays.

#include <algorithm>
#include <cmath>
#include <limits>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

void expectZeros(const hcyArray* array, std::size_t count) {
  EXPECT_EQ(valuesOf(array), std::vector<double>(count, 0.0));
}

void expectEmptyDouble(const Array& array) {
  ASSERT_TRUE(array);
  EXPECT_EQ(hcyGetClassID(array), hcyDOUBLE_CLASS);
  EXPECT_FALSE(hcyIsSparse(array));
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(shapeOf(array), (Shape{0, 0}));
}

class NewArray : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NewArray, testing::ValuesIn(allKinds()), kindName);

TEST_P(NewArray, HasItsClassAndShape) {
  const Array array = createMatrix(GetParam(), 3, 2);
  ASSERT_TRUE(array);
  EXPECT_EQ(hcyGetClassID(array), GetParam().id);
  EXPECT_EQ(hcyIsSparse(array), GetParam().isSparse);
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(shapeOf(array), (Shape{3, 2}));
  EXPECT_EQ(hcyGetNumberOfElements(array), 6U);
}

TEST_P(NewArray, IsZero) {
  const Array array = createMatrix(GetParam(), 3, 2);
  expectZeros(array, 6);
}

TEST_P(NewArray, OfNoElementsKeepsItsDimensions) {
  for (const Shape& shape : {Shape{0, 5}, Shape{5, 0}, Shape{0, 0}}) {
    const Array array = createMatrix(GetParam(), shape[0], shape[1]);
    ASSERT_TRUE(array);
    EXPECT_EQ(shapeOf(array), shape);
    EXPECT_EQ(hcyGetNumberOfElements(array), 0U);
    EXPECT_EQ(hcyGetClassID(array), GetParam().id);
  }
}

TEST_P(NewArray, IsAHandleOfItsOwn) {
  const Array first = createMatrix(GetParam(), 2, 2);
  const Array second = createMatrix(GetParam(), 2, 2);
  EXPECT_NE(static_cast<hcyArray*>(first), static_cast<hcyArray*>(second));
  fill(GetParam(), first);
  expectZeros(second, 4);
}

class NewFullArray : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NewFullArray, testing::ValuesIn(fullKinds()), kindName);

TEST_P(NewFullArray, OfNoDimensionsIsZeroByZero) {
  const Array array = createArray(GetParam(), {});
  EXPECT_EQ(hcyGetClassID(array), GetParam().id);
  EXPECT_EQ(shapeOf(array), (Shape{0, 0}));
}

TEST_P(NewFullArray, OfOneDimensionIsAColumn) {
  const Array array = createArray(GetParam(), {5});
  EXPECT_EQ(hcyGetClassID(array), GetParam().id);
  EXPECT_EQ(shapeOf(array), (Shape{5, 1}));
  expectZeros(array, 5);
}

TEST_P(NewFullArray, TakesTwoAndMoreDimensionsAsTheyAre) {
  for (const Shape& shape : {Shape{2, 3}, Shape{1, 1}, Shape{2, 3, 4}, Shape{2, 1, 1},
                             Shape{1, 1, 0}, Shape{1, 2, 1, 3, 1}}) {
    const Array array = createArray(GetParam(), shape);
    EXPECT_EQ(hcyGetClassID(array), GetParam().id);
    EXPECT_EQ(shapeOf(array), shape);
    std::size_t count = 1;
    for (const std::size_t dimension : shape) count *= dimension;
    expectZeros(array, count);
  }
}

class NewNumericArray : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NewNumericArray, testing::ValuesIn(numericKinds()), kindName);

TEST_P(NewNumericArray, IsComplexForTheComplexityOneOnly) {
  for (const hcyComplexity complexity : {-1, 0, 1, 2, 257}) {
    const Array array = createMatrix(GetParam(), 2, 3, complexity);
    EXPECT_EQ(hcyIsComplex(array), complexity == 1) << complexity;
    EXPECT_EQ(hcyGetImagData(array) != nullptr, complexity == 1) << complexity;
  }
}

TEST_P(NewNumericArray, HasImaginaryPartsOfZeroInStorageOfTheirOwn) {
  const Array array = createMatrix(GetParam(), 2, 3, hcyCOMPLEX);
  EXPECT_NE(hcyGetImagData(array), hcyGetData(array));
  EXPECT_EQ(imaginaryOf(array), std::vector<double>(6, 0.0));
  expectZeros(array, 6);
}

TEST_P(NewNumericArray, OfNoElementsIsRealWhateverWasAskedFor) {
  const Array array = createMatrix(GetParam(), 0, 5, hcyCOMPLEX);
  EXPECT_FALSE(hcyIsComplex(array));
  EXPECT_EQ(hcyGetImagData(array), nullptr);
}

class NewFullNumericArray : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, NewFullNumericArray, testing::ValuesIn(fullNumericKinds()), kindName);

TEST_P(NewFullNumericArray, IsTheSameFromAMatrixAsFromDimensions) {
  for (const hcyComplexity complexity : {hcyREAL, hcyCOMPLEX}) {
    const Array array = hcyCreateNumericMatrix(4, 2, GetParam().id, complexity);
    EXPECT_EQ(hcyGetClassID(array), GetParam().id);
    EXPECT_EQ(shapeOf(array), (Shape{4, 2}));
    EXPECT_EQ(hcyIsComplex(array), complexity == hcyCOMPLEX);
    expectZeros(array, 8);
  }
}

TEST_P(NewFullNumericArray, OfThreeDimensionsMayBeComplex) {
  const Array array = createArray(GetParam(), {2, 3, 2}, hcyCOMPLEX);
  EXPECT_TRUE(hcyIsComplex(array));
  EXPECT_EQ(imaginaryOf(array), std::vector<double>(12, 0.0));
  const Array real = createArray(GetParam(), {2, 3, 2}, 2);
  EXPECT_FALSE(hcyIsComplex(real));
}

TEST(NewNumericArrays, AreRefusedForAClassThatIsNotNumeric) {
  const std::size_t dims[] = {2, 2};
  for (const hcyClassID id : {hcyLOGICAL_CLASS + 0, hcyCHAR_CLASS + 0, hcySTRUCT_CLASS + 0,
                              hcyCELL_CLASS + 0, 14, 19, std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(Array(hcyCreateNumericMatrix(2, 2, id, hcyREAL))) << id;
    EXPECT_FALSE(Array(hcyCreateNumericArray(2, dims, id, hcyREAL))) << id;
  }
}

TEST(NewDoubleMatrix, HasItsShapeAndComplexity) {
  const Array real = hcyCreateDoubleMatrix(2, 3, 2);
  EXPECT_EQ(hcyGetClassID(real), hcyDOUBLE_CLASS);
  EXPECT_EQ(shapeOf(real), (Shape{2, 3}));
  EXPECT_FALSE(hcyIsComplex(real));
  expectZeros(real, 6);

  const Array complex = hcyCreateDoubleMatrix(2, 3, hcyCOMPLEX);
  EXPECT_TRUE(hcyIsComplex(complex));
  EXPECT_EQ(imaginaryOf(complex), std::vector<double>(6, 0.0));
}

TEST(NewDoubleScalar, HoldsItsValue) {
  constexpr auto limits = std::numeric_limits<double>();
  for (const double value :
       {0.0, 1.5, -2.25, limits.max(), limits.denorm_min(), limits.infinity()}) {
    const Array array = hcyCreateDoubleScalar(value);
    EXPECT_EQ(hcyGetClassID(array), hcyDOUBLE_CLASS);
    EXPECT_EQ(shapeOf(array), (Shape{1, 1}));
    EXPECT_FALSE(hcyIsComplex(array));
    EXPECT_EQ(*hcyGetPr(array), value);
  }
  EXPECT_TRUE(std::isnan(*hcyGetPr(Array(hcyCreateDoubleScalar(limits.quiet_NaN())))));
  EXPECT_TRUE(std::signbit(*hcyGetPr(Array(hcyCreateDoubleScalar(-0.0)))));
}

TEST(NewLogicalScalar, HoldsItsValue) {
  for (const bool value : {false, true}) {
    const Array array = hcyCreateLogicalScalar(value);
    EXPECT_EQ(hcyGetClassID(array), hcyLOGICAL_CLASS);
    EXPECT_EQ(shapeOf(array), (Shape{1, 1}));
    EXPECT_EQ(*hcyGetLogicals(array), value);
  }
}

TEST(NewMatrix, OfLogicalsOrCellsHasItsShape) {
  const Array logicals = hcyCreateLogicalMatrix(2, 4);
  EXPECT_EQ(hcyGetClassID(logicals), hcyLOGICAL_CLASS);
  EXPECT_EQ(shapeOf(logicals), (Shape{2, 4}));
  expectZeros(logicals, 8);
  const Array cells = hcyCreateCellMatrix(2, 4);
  EXPECT_EQ(hcyGetClassID(cells), hcyCELL_CLASS);
  EXPECT_EQ(shapeOf(cells), (Shape{2, 4}));
  EXPECT_FALSE(hcyIsEmpty(cells));
}

TEST(NewCellArray, HasElementsThatReadAsEmptyDoubles) {
  const Array array = hcyCreateCellMatrix(2, 2);
  for (std::size_t i = 0; i < 4; ++i) expectEmptyDouble(hcyGetCell(array, i));
}

TEST(NewStructMatrix, HasItsFieldsInOrder) {
  const char* const names[] = {"b", "a", "", "a", "not an identifier"};
  const Array array = hcyCreateStructMatrix(2, 1, 5, names);
  EXPECT_EQ(hcyGetClassID(array), hcySTRUCT_CLASS);
  EXPECT_EQ(shapeOf(array), (Shape{2, 1}));
  ASSERT_EQ(hcyGetNumberOfFields(array), 5);
  for (int n = 0; n < 5; ++n) EXPECT_STREQ(hcyGetFieldNameByNumber(array, n), names[n]);
  for (std::size_t i = 0; i < 2; ++i) {
    for (int n = 0; n < 5; ++n) expectEmptyDouble(hcyGetFieldByNumber(array, i, n));
  }
}

TEST(NewStructMatrix, CopiesItsFieldNames) {
  std::string name = "before";
  const char* const names[] = {name.c_str()};
  const Array array = hcyCreateStructMatrix(1, 1, 1, names);
  name = "after!";
  EXPECT_STREQ(hcyGetFieldNameByNumber(array, 0), "before");
}

TEST(NewStructArray, HasNoFieldsWhenNoneAreGiven) {
  const std::size_t dims[] = {2, 3};
  for (const int nfields : {0, -1, std::numeric_limits<int>::min()}) {
    const Array matrix = hcyCreateStructMatrix(2, 3, nfields, nullptr);
    const Array array = hcyCreateStructArray(2, dims, nfields, nullptr);
    for (const hcyArray* const each :
         {static_cast<hcyArray*>(matrix), static_cast<hcyArray*>(array)}) {
      EXPECT_EQ(hcyGetNumberOfFields(each), 0);
      EXPECT_EQ(shapeOf(each), (Shape{2, 3}));
    }
  }
}

TEST(NewStructArray, HasNamesEvenWithoutElements) {
  const std::size_t dims[] = {0, 3, 2};
  const Array array = hcyCreateStructArray(3, dims, fieldCount, fieldNames);
  EXPECT_EQ(shapeOf(array), (Shape{0, 3, 2}));
  ASSERT_EQ(hcyGetNumberOfFields(array), 2);
  EXPECT_STREQ(hcyGetFieldNameByNumber(array, 0), "first");
  EXPECT_STREQ(hcyGetFieldNameByNumber(array, 1), "second");
}

}  // namespace
}  // namespace hcy::abi
