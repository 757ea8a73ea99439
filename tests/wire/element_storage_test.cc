// SPDX-License-Identifier: Apache-2.0

#include "wire/element_storage.h"

#include "support/array_messages.h"
#include "support/exception_checks.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::complexRowOf;
using test::dataOf;
using test::Numbers;
using test::numbers;
using test::rowOf;

template <class Class>
Numbers realOf(const ArrayData& array) {
  return numbers(array.real.as<typename Class::Element>());
}
template <class Class>
Numbers imaginaryOf(const ArrayData& array) {
  return numbers(array.imaginary.as<typename Class::Element>());
}

template <class Class>
class NumericStorage : public testing::Test {};
TYPED_TEST_SUITE(NumericStorage, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericStorage, OfANewRealArrayIsZero) {
  ArrayData array = dataOf(arrayOf(TypeParam::type, {2, 3}));
  sizeInitialStorage(array, 6, false);
  EXPECT_TRUE(array.hasPart());
  EXPECT_EQ(realOf<TypeParam>(array), Numbers(6, 0.0));
  EXPECT_TRUE(array.imaginary.empty());
}

TYPED_TEST(NumericStorage, OfANewComplexArrayIsZeroInBothParts) {
  ArrayData array = dataOf(arrayOf(TypeParam::type, {2, 3}));
  sizeInitialStorage(array, 6, true);
  EXPECT_EQ(realOf<TypeParam>(array), Numbers(6, 0.0));
  EXPECT_EQ(imaginaryOf<TypeParam>(array), Numbers(6, 0.0));
}

TYPED_TEST(NumericStorage, GrowsBothPartsWithZeros) {
  ArrayData array = dataOf(complexRowOf<TypeParam>({1, 2, 3, 4}, {5, 6, 7, 8}));
  resizeElementStorage(array, 6);
  EXPECT_EQ(realOf<TypeParam>(array), (Numbers{1, 2, 3, 4, 0, 0}));
  EXPECT_EQ(imaginaryOf<TypeParam>(array), (Numbers{5, 6, 7, 8, 0, 0}));
}

TYPED_TEST(NumericStorage, ShrinksBothPartsFromTheEnd) {
  ArrayData array = dataOf(complexRowOf<TypeParam>({1, 2, 3}, {5, 6, 7}));
  resizeElementStorage(array, 1);
  EXPECT_EQ(realOf<TypeParam>(array), Numbers{1});
  EXPECT_EQ(imaginaryOf<TypeParam>(array), Numbers{5});
  resizeElementStorage(array, 0);
  EXPECT_TRUE(array.real.empty());
  EXPECT_TRUE(array.imaginary.empty());
}

TYPED_TEST(NumericStorage, OfARealArrayGetsNoImaginaryPart) {
  ArrayData array = dataOf(rowOf<TypeParam>({1, 2}));
  resizeElementStorage(array, 4);
  EXPECT_EQ(realOf<TypeParam>(array), (Numbers{1, 2, 0, 0}));
  EXPECT_TRUE(array.imaginary.empty());
}

TYPED_TEST(NumericStorage, IsMadeWhereThereWasNone) {
  ArrayData array = dataOf(arrayOf(TypeParam::type, {0, 0}));
  resizeElementStorage(array, 0);
  EXPECT_TRUE(array.hasPart());
  resizeElementStorage(array, 2);
  EXPECT_EQ(realOf<TypeParam>(array), Numbers(2, 0.0));
}

template <class Class>
class RealStorage : public testing::Test {};
using RealClasses = testing::Types<LOGICAL_class, CHAR_class>;
TYPED_TEST_SUITE(RealStorage, RealClasses, test::ClassNames);

TYPED_TEST(RealStorage, OfANewArrayIsZeroWhateverComplexityIsAskedFor) {
  for (const bool complex : {false, true}) {
    ArrayData array = dataOf(arrayOf(TypeParam::type, {1, 3}));
    sizeInitialStorage(array, 3, complex);
    EXPECT_EQ(realOf<TypeParam>(array), Numbers(3, 0.0));
  }
}

TYPED_TEST(RealStorage, GrowsWithZerosAndShrinksFromTheEnd) {
  ArrayData array = dataOf(rowOf<TypeParam>({1, 0, 1}));
  resizeElementStorage(array, 5);
  EXPECT_EQ(realOf<TypeParam>(array), (Numbers{1, 0, 1, 0, 0}));
  resizeElementStorage(array, 1);
  EXPECT_EQ(realOf<TypeParam>(array), Numbers{1});
  resizeElementStorage(array, 0);
  EXPECT_TRUE(array.real.empty());
}

TEST(NewStorage, OfContainersAndSparseArraysIsLeftAlone) {
  for (const auto type : {VORTEN_Array::STRUCT, VORTEN_Array::CELL, VORTEN_Array::SPARSE}) {
    ArrayData array = dataOf(arrayOf(type, {2, 3}));
    sizeInitialStorage(array, 6, true);
    EXPECT_EQ(test::writtenBytes(array), arrayOf(type, {2, 3}).SerializeAsString());
  }
}

TEST(EmptyDouble, IsSentWithoutAPart) {
  ArrayData array;
  makeEmptyDouble(array);
  EXPECT_EQ(test::writtenBytes(array), arrayOf(VORTEN_Array::DOUBLE, {0, 0}).SerializeAsString());
}

ArrayData sparseWithValues(std::initializer_list<std::uint64_t> dimensions) {
  VORTEN_Array array = test::sparseOf(VORTEN_Array::Sparse::DOUBLE, dimensions, {2, 1}, {0, 2});
  test::assign(array.mutable_sparse()->mutable_qxsparsedouble()->mutable_elements(), {5, 6});
  return dataOf(array);
}

TEST(SparseStorage, GetsAStartForEachColumnAndOneMoreWhateverTheCount) {
  for (const std::uint32_t count : {0U, 1U, 15U, 1000U}) {
    ArrayData array = sparseWithValues({5, 3});
    resizeElementStorage(array, count);
    EXPECT_EQ(numbers(array.sparse().jc()), (Numbers{0, 2, 0, 0}));
    EXPECT_EQ(numbers(array.sparse().ir()), (Numbers{2, 1}));
    EXPECT_EQ(numbers(array.sparse().qxsparsedouble().elements()), (Numbers{5, 6}));
  }
}

TEST(SparseStorage, OfFewerDimensionsHasNoColumns) {
  ArrayData array = sparseWithValues({5});
  resizeElementStorage(array, 5);
  EXPECT_EQ(numbers(array.sparse().jc()), Numbers{0});
}

TEST(SparseStorage, IsUnchangedWhenThereAreTooManyColumns) {
  for (const std::uint64_t columns : {std::uint64_t{2147483647}, UINT64_MAX - 1, UINT64_MAX}) {
    ArrayData array = sparseWithValues({5, columns});
    SCOPED_TRACE(columns);
    test::expectPositiveOverflow([&] { resizeElementStorage(array, 5); });
    EXPECT_EQ(numbers(array.sparse().jc()), (Numbers{0, 2}));
  }
}

TEST(ElementStorage, OfContainersIsNotHere) {
  ArrayData array;
  array.setType(VORTEN_Array::CELL);
  resizeElementStorage(array, 3);
  EXPECT_FALSE(array.hasPart());
  EXPECT_FALSE(array.hasContainer());
}

}  // namespace
}  // namespace hcy
