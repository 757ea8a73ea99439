// SPDX-License-Identifier: Apache-2.0

#include "wire/data_accessor.h"

#include "support/array_messages.h"
#include "wire/element_storage.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::complexRowOf;
using test::dataOf;
using test::rowOf;
using test::sparseOf;

template <class Class>
typename Class::Element* elements(void* data) {
  return static_cast<typename Class::Element*>(data);
}

template <class Class>
class NumericData : public testing::Test {};
TYPED_TEST_SUITE(NumericData, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericData, LiesInTheArray) {
  using Element = typename TypeParam::Element;
  const ArrayData array = dataOf(complexRowOf<TypeParam>({1, 2}, {3, 4}));
  const DataAccessor accessor = accessData(array, true);
  EXPECT_EQ(accessor.scalar, 1.0);
  elements<TypeParam>(accessor.realData)[1] = 5;
  elements<TypeParam>(accessor.imagData)[0] = 6;
  EXPECT_EQ(test::numbers(array.real.as<Element>()), (test::Numbers{1, 5}));
  EXPECT_EQ(test::numbers(array.imaginary.as<Element>()), (test::Numbers{6, 4}));
}

TYPED_TEST(NumericData, IsAbsentWithoutTheTypedPartWhichCanBeMadePresent) {
  ArrayData array = dataOf(arrayOf(TypeParam::type, {1, 1}));
  const DataAccessor accessor = accessData(array, false);
  EXPECT_FALSE(accessor.isPresent);
  EXPECT_FALSE(array.hasPart());
  showElements(array);
  EXPECT_TRUE(accessData(array, false).isPresent);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, nullptr);
  EXPECT_TRUE(array.hasPart());
}

TYPED_TEST(NumericData, OfAnEmptyComplexArrayIsNull) {
  const ArrayData array = dataOf(arrayOf(TypeParam::type, {0, 0}));
  int marker = 0;
  DataAccessor accessor{array, true, &marker, &marker, 7.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, nullptr);
}

TYPED_TEST(NumericData, LeavesTheImaginaryPointerWhenItIsNotWanted) {
  const ArrayData array = dataOf(complexRowOf<TypeParam>({1, 2}, {3, 4}));
  int marker = 0;
  DataAccessor accessor{array, false, nullptr, &marker, 0.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.imagData, &marker);
}

template <class Class>
class ByteData : public testing::Test {};
TYPED_TEST_SUITE(ByteData, test::ByteClasses, test::ClassNames);

TYPED_TEST(ByteData, IsPresentWithItsByteString) {
  VORTEN_Array message = arrayOf(TypeParam::type, {0, 0});
  TypeParam::write(message);
  ArrayData array = dataOf(message);
  EXPECT_TRUE(array.hasPart());
  EXPECT_FALSE(accessData(array, false).isPresent);
  showElements(array);
  EXPECT_TRUE(accessData(array, false).isPresent);
  EXPECT_TRUE(array.hasReal());
  EXPECT_FALSE(array.hasImaginary());
}

TYPED_TEST(ByteData, ReadsTheFirstElementAsASignedByte) {
  EXPECT_EQ(accessData(dataOf(rowOf<TypeParam>({200})), false).scalar, -56.0);
  EXPECT_EQ(accessData(dataOf(rowOf<TypeParam>({100})), false).scalar, 100.0);
}

TEST(WideData, IsReadAsUnsigned) {
  VORTEN_Array large = arrayOf(VORTEN_Array::UINT64, {1, 1});
  large.mutable_uint64()->add_elements(UINT64_MAX);
  EXPECT_EQ(accessData(dataOf(large), false).scalar, 1.8446744073709552e19);
}

TEST(LogicalData, LiesInTheArrayAndHasNoImaginaryPart) {
  const ArrayData array = dataOf(rowOf<LOGICAL_class>({1, 0}));
  int marker = 0;
  DataAccessor accessor{array, true, nullptr, &marker, 0.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 1.0);
  EXPECT_EQ(accessor.realData, array.real.data());
  EXPECT_EQ(accessor.imagData, &marker);
}

TEST(LogicalData, IsAbsentWithoutTheTypedPartWhichCanBeMadePresent) {
  ArrayData array = dataOf(arrayOf(VORTEN_Array::LOGICAL, {1, 1}));
  const DataAccessor accessor = accessData(array, false);
  EXPECT_FALSE(accessor.isPresent);
  showElements(array);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_TRUE(array.hasPart());
}

TEST(DataOfProxies, IsLeftAlone) {
  for (const auto type : {VORTEN_Array::CHAR, VORTEN_Array::STRUCT, VORTEN_Array::CELL}) {
    const ArrayData array = dataOf(arrayOf(type, {1, 1}));
    int marker = 0;
    DataAccessor accessor{array, true, &marker, &marker, 7.0};
    dispatch_on_QXType(array.type(), accessor);
    EXPECT_EQ(accessor.realData, &marker);
    EXPECT_EQ(accessor.imagData, &marker);
    EXPECT_EQ(accessor.scalar, 7.0);
  }
}

TEST(DataOfProxies, IsNothingOfItsOwn) {
  for (const auto type : {VORTEN_Array::CHAR, VORTEN_Array::STRUCT, VORTEN_Array::CELL}) {
    const ArrayData array = dataOf(arrayOf(type, {1, 1}));
    const DataAccessor accessor = accessData(array, true);
    EXPECT_EQ(accessor.realData, nullptr);
    EXPECT_EQ(accessor.imagData, nullptr);
    EXPECT_EQ(accessor.scalar, 0.0);
  }
}

TEST(SparseData, OfDoublesHasBothPartsWhicheverAreWanted) {
  VORTEN_Array message = sparseOf(VORTEN_Array::Sparse::DOUBLE);
  test::assign(message.mutable_sparse()->mutable_qxsparsedouble()->mutable_elements(), {5, 6});
  test::assign(message.mutable_sparse()->mutable_qxsparsedouble()->mutable_imag_elements(), {7, 8});
  const ArrayData array = dataOf(message);
  const VORTEN_Array::Double& values = array.sparse().qxsparsedouble();
  for (const bool complex : {false, true}) {
    const DataAccessor accessor = accessData(array, complex);
    EXPECT_EQ(accessor.scalar, 5.0);
    EXPECT_EQ(accessor.realData, values.elements().data());
    EXPECT_EQ(accessor.imagData, values.imag_elements().data());
  }
}

TEST(SparseData, WithoutImaginaryPartsLeavesTheirPointer) {
  ArrayData array = dataOf(sparseOf(VORTEN_Array::Sparse::DOUBLE));
  int marker = 0;
  DataAccessor accessor{array, true, &marker, &marker, 7.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, &marker);
  EXPECT_FALSE(accessor.isPresent);
  showElements(array);
  EXPECT_TRUE(array.sparse().has_qxsparsedouble());
}

TEST(SparseData, OfAnyOtherTypeIsLogical) {
  for (const auto type : {VORTEN_Array::Sparse::LOGICAL, VORTEN_Array::Sparse::SINGLE}) {
    VORTEN_Array message = sparseOf(type);
    message.mutable_sparse()->mutable_qxsparsesingle()->add_elements(9.0F);
    ArrayData array = dataOf(message);
    EXPECT_EQ(accessData(array, false).realData, nullptr);
    EXPECT_FALSE(accessData(array, false).isPresent);
    showElements(array);
    EXPECT_TRUE(array.sparse().has_logical());
    auto& elements = *array.writeSparse().mutable_logical()->mutable_elements();
    test::assign(&elements, {1, 0});
    const DataAccessor accessor = accessData(array, true);
    EXPECT_EQ(accessor.scalar, 1.0);
    EXPECT_EQ(accessor.realData, elements.mutable_data());
    EXPECT_EQ(accessor.imagData, nullptr);
  }
}

TEST(SparseData, OfAMissingPartIsThatOfDoubles) {
  ArrayData array = dataOf(arrayOf(VORTEN_Array::SPARSE, {3, 3}));
  EXPECT_EQ(accessData(array, false).realData, nullptr);
  EXPECT_FALSE(accessData(array, false).isPresent);
  showElements(array);
  EXPECT_TRUE(array.hasSparse());
  EXPECT_TRUE(array.sparse().has_qxsparsedouble());
}

}  // namespace
}  // namespace hcy
