// SPDX-License-Identifier: Apache-2.0

#include "wire/element_storage.h"

#include "support/array_messages.h"
#include "support/exception_checks.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::complexRowOf;
using test::hasTypedPart;
using test::Numbers;
using test::numbers;
using test::rowOf;

template <class Class>
class NumericStorage : public testing::Test {};
TYPED_TEST_SUITE(NumericStorage, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericStorage, OfANewRealArrayIsZero) {
  VORTEN_Array array = arrayOf(TypeParam::type, {2, 3});
  sizeInitialStorage(array, 6, false);
  EXPECT_TRUE(hasTypedPart(array));
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers(6, 0.0));
  EXPECT_TRUE(TypeParam::read(array).imag_elements().empty());
}

TYPED_TEST(NumericStorage, OfANewComplexArrayIsZeroInBothParts) {
  VORTEN_Array array = arrayOf(TypeParam::type, {2, 3});
  sizeInitialStorage(array, 6, true);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers(6, 0.0));
  EXPECT_EQ(numbers(TypeParam::read(array).imag_elements()), Numbers(6, 0.0));
}

TYPED_TEST(NumericStorage, GrowsBothPartsWithZeros) {
  VORTEN_Array array = complexRowOf<TypeParam>({1, 2, 3, 4}, {5, 6, 7, 8});
  resizeElementStorage(array, 6);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), (Numbers{1, 2, 3, 4, 0, 0}));
  EXPECT_EQ(numbers(TypeParam::read(array).imag_elements()), (Numbers{5, 6, 7, 8, 0, 0}));
}

TYPED_TEST(NumericStorage, ShrinksBothPartsFromTheEnd) {
  VORTEN_Array array = complexRowOf<TypeParam>({1, 2, 3}, {5, 6, 7});
  resizeElementStorage(array, 1);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers{1});
  EXPECT_EQ(numbers(TypeParam::read(array).imag_elements()), Numbers{5});
  resizeElementStorage(array, 0);
  EXPECT_TRUE(TypeParam::read(array).elements().empty());
  EXPECT_TRUE(TypeParam::read(array).imag_elements().empty());
}

TYPED_TEST(NumericStorage, OfARealArrayGetsNoImaginaryPart) {
  VORTEN_Array array = rowOf<TypeParam>({1, 2});
  resizeElementStorage(array, 4);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), (Numbers{1, 2, 0, 0}));
  EXPECT_TRUE(TypeParam::read(array).imag_elements().empty());
}

TYPED_TEST(NumericStorage, IsMadeWhereThereWasNone) {
  VORTEN_Array array = arrayOf(TypeParam::type, {0, 0});
  resizeElementStorage(array, 0);
  EXPECT_TRUE(hasTypedPart(array));
  resizeElementStorage(array, 2);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers(2, 0.0));
}

template <class Class>
class RealStorage : public testing::Test {};
using RealClasses = testing::Types<LOGICAL_class, CHAR_class>;
TYPED_TEST_SUITE(RealStorage, RealClasses, test::ClassNames);

TYPED_TEST(RealStorage, OfANewArrayIsZeroWhateverComplexityIsAskedFor) {
  for (const bool complex : {false, true}) {
    VORTEN_Array array = arrayOf(TypeParam::type, {1, 3});
    sizeInitialStorage(array, 3, complex);
    EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers(3, 0.0));
  }
}

TYPED_TEST(RealStorage, GrowsWithZerosAndShrinksFromTheEnd) {
  VORTEN_Array array = rowOf<TypeParam>({1, 0, 1});
  resizeElementStorage(array, 5);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), (Numbers{1, 0, 1, 0, 0}));
  resizeElementStorage(array, 1);
  EXPECT_EQ(numbers(TypeParam::read(array).elements()), Numbers{1});
  resizeElementStorage(array, 0);
  EXPECT_TRUE(TypeParam::read(array).elements().empty());
}

template <class Class>
class ContainerStorage : public testing::Test {};
TYPED_TEST_SUITE(ContainerStorage, test::ContainerClasses, test::ClassNames);

TYPED_TEST(ContainerStorage, GrowsByEmptyDoublesAndShrinksFromTheEnd) {
  VORTEN_Array array = arrayOf(TypeParam::type, {1, 1});
  auto& elements = *TypeParam::write(array).mutable_elements();
  *elements.Add() = rowOf<INT32_class>({7});
  resizeElementStorage(array, 3);
  ASSERT_EQ(elements.size(), 3);
  EXPECT_EQ(elements[0].type(), VORTEN_Array::INT32);
  EXPECT_TRUE(test::isEmptyDouble(elements[1]));
  EXPECT_TRUE(test::isEmptyDouble(elements[2]));
  resizeElementStorage(array, 1);
  ASSERT_EQ(elements.size(), 1);
  EXPECT_EQ(elements[0].type(), VORTEN_Array::INT32);
  resizeElementStorage(array, 0);
  EXPECT_TRUE(elements.empty());
}

TYPED_TEST(ContainerStorage, GrowsByEmptyDoublesWhereOthersWereRemoved) {
  VORTEN_Array array = arrayOf(TypeParam::type, {1, 1});
  *TypeParam::write(array).mutable_elements()->Add() = rowOf<INT32_class>({7});
  resizeElementStorage(array, 0);
  resizeElementStorage(array, 1);
  EXPECT_TRUE(test::isEmptyDouble(TypeParam::read(array).elements(0)));
}

TEST(NewStorage, OfContainersAndSparseArraysIsLeftAlone) {
  for (const auto type : {VORTEN_Array::STRUCT, VORTEN_Array::CELL, VORTEN_Array::SPARSE}) {
    VORTEN_Array array = arrayOf(type, {2, 3});
    sizeInitialStorage(array, 6, true);
    EXPECT_FALSE(hasTypedPart(array));
  }
}

TEST(EmptyDouble, IsWhatAnyArrayCanBeMade) {
  VORTEN_Array fresh;
  makeEmptyDouble(fresh);
  EXPECT_EQ(fresh.type(), VORTEN_Array::DOUBLE);
  EXPECT_EQ(numbers(fresh.dimension()), (Numbers{0, 0}));
  EXPECT_FALSE(hasTypedPart(fresh));
  VORTEN_Array filled = test::rowOf<INT32_class>({1, 2, 3});
  makeEmptyDouble(filled);
  EXPECT_EQ(filled.SerializeAsString(), fresh.SerializeAsString());
}

VORTEN_Array sparseWithValues(std::initializer_list<std::uint64_t> dimensions) {
  VORTEN_Array array = test::sparseOf(VORTEN_Array::Sparse::DOUBLE, dimensions, {2, 1}, {0, 2});
  test::assign(array.mutable_sparse()->mutable_qxsparsedouble()->mutable_elements(), {5, 6});
  return array;
}

TEST(SparseStorage, GetsAStartForEachColumnAndOneMoreWhateverTheCount) {
  for (const std::uint32_t count : {0U, 1U, 15U, 1000U}) {
    VORTEN_Array array = sparseWithValues({5, 3});
    resizeElementStorage(array, count);
    EXPECT_EQ(numbers(array.sparse().jc()), (Numbers{0, 2, 0, 0}));
    EXPECT_EQ(numbers(array.sparse().ir()), (Numbers{2, 1}));
    EXPECT_EQ(numbers(array.sparse().qxsparsedouble().elements()), (Numbers{5, 6}));
  }
}

TEST(SparseStorage, OfFewerDimensionsHasNoColumns) {
  VORTEN_Array array = sparseWithValues({5});
  resizeElementStorage(array, 5);
  EXPECT_EQ(numbers(array.sparse().jc()), Numbers{0});
}

TEST(SparseStorage, IsUnchangedWhenThereAreTooManyColumns) {
  for (const std::uint64_t columns : {std::uint64_t{2147483647}, UINT64_MAX - 1, UINT64_MAX}) {
    VORTEN_Array array = sparseWithValues({5, columns});
    SCOPED_TRACE(columns);
    test::expectPositiveOverflow([&] { resizeElementStorage(array, 5); });
    EXPECT_EQ(numbers(array.sparse().jc()), (Numbers{0, 2}));
  }
}

}  // namespace
}  // namespace hcy
