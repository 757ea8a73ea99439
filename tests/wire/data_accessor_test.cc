// SPDX-License-Identifier: Apache-2.0

#include "wire/data_accessor.h"

#include "support/array_messages.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::complexRowOf;
using test::hasTypedPart;
using test::rowOf;
using test::sparseOf;

// What the caller's element type is where the elements lie in the message.
template <class Class>
struct Stored {
  using Element = typename Class::Element;
};
template <WidenedClass Class>
struct Stored<Class> {
  using Element = WireElement<Class>;
};

template <class Class>
typename Stored<Class>::Element* elements(void* data) {
  return static_cast<typename Stored<Class>::Element*>(data);
}

template <class Class>
class NumericData : public testing::Test {};
TYPED_TEST_SUITE(NumericData, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericData, LiesInTheMessage) {
  VORTEN_Array array = complexRowOf<TypeParam>({1, 2}, {3, 4});
  const DataAccessor accessor = accessData(array, true);
  EXPECT_EQ(accessor.scalar, 1.0);
  elements<TypeParam>(accessor.realData)[1] = 5;
  elements<TypeParam>(accessor.imagData)[0] = 6;
  EXPECT_EQ(test::numbers(TypeParam::read(array).elements()), (test::Numbers{1, 5}));
  EXPECT_EQ(test::numbers(TypeParam::read(array).imag_elements()), (test::Numbers{6, 4}));
}

// Shows the part of an array from which elements were read, as it is sent then.
void present(VORTEN_Array& array) { dispatch_on_QXType(array.type(), PartPresenter{array}); }

TYPED_TEST(NumericData, IsAbsentWithoutTheTypedPartWhichCanBeMadePresent) {
  VORTEN_Array array = arrayOf(TypeParam::type, {1, 1});
  const DataAccessor accessor = accessData(array, false);
  EXPECT_FALSE(accessor.isPresent);
  EXPECT_FALSE(hasTypedPart(array));
  present(array);
  EXPECT_TRUE(accessData(array, false).isPresent);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, nullptr);
  EXPECT_TRUE(hasTypedPart(array));
}

TYPED_TEST(NumericData, OfAnEmptyComplexArrayIsNull) {
  VORTEN_Array array = arrayOf(TypeParam::type, {0, 0});
  int marker = 0;
  DataAccessor accessor{array, true, &marker, &marker, 7.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, nullptr);
}

TYPED_TEST(NumericData, LeavesTheImaginaryPointerWhenItIsNotWanted) {
  VORTEN_Array array = complexRowOf<TypeParam>({1, 2}, {3, 4});
  int marker = 0;
  DataAccessor accessor{array, false, nullptr, &marker, 0.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.imagData, &marker);
}

template <class Class>
class ByteData : public testing::Test {};
TYPED_TEST_SUITE(ByteData, test::ByteClasses, test::ClassNames);

TYPED_TEST(ByteData, IsPresentWithItsByteString) {
  VORTEN_Array array = arrayOf(TypeParam::type, {0, 0});
  TypeParam::write(array);
  EXPECT_FALSE(accessData(array, false).isPresent);
  present(array);
  EXPECT_TRUE(accessData(array, false).isPresent);
  EXPECT_TRUE(TypeParam::read(array).has_elements());
  EXPECT_FALSE(TypeParam::read(array).has_imag_elements());
}

TYPED_TEST(ByteData, ReadsTheFirstElementAsASignedByte) {
  VORTEN_Array large = rowOf<TypeParam>({200});
  EXPECT_EQ(accessData(large, false).scalar, -56.0);
  VORTEN_Array small = rowOf<TypeParam>({100});
  EXPECT_EQ(accessData(small, false).scalar, 100.0);
}

TEST(WideData, IsReadAsItLiesInTheMessage) {
  VORTEN_Array wide = rowOf<UINT16_class>({-1});
  EXPECT_EQ(accessData(wide, false).scalar, 4294967295.0);
  VORTEN_Array negative = rowOf<INT16_class>({-70000});
  EXPECT_EQ(accessData(negative, false).scalar, -70000.0);
  VORTEN_Array large = arrayOf(VORTEN_Array::UINT64, {1, 1});
  large.mutable_uint64()->add_elements(UINT64_MAX);
  EXPECT_EQ(accessData(large, false).scalar, 1.8446744073709552e19);
}

TEST(LogicalData, LiesInTheMessageAndHasNoImaginaryPart) {
  VORTEN_Array array = rowOf<LOGICAL_class>({1, 0});
  int marker = 0;
  DataAccessor accessor{array, true, nullptr, &marker, 0.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 1.0);
  EXPECT_EQ(accessor.realData, array.mutable_logical()->mutable_elements()->mutable_data());
  EXPECT_EQ(accessor.imagData, &marker);
}

TEST(LogicalData, IsAbsentWithoutTheTypedPartWhichCanBeMadePresent) {
  VORTEN_Array array = arrayOf(VORTEN_Array::LOGICAL, {1, 1});
  const DataAccessor accessor = accessData(array, false);
  EXPECT_FALSE(accessor.isPresent);
  present(array);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_TRUE(hasTypedPart(array));
}

TEST(DataOfProxies, IsLeftAlone) {
  for (const auto type : {VORTEN_Array::CHAR, VORTEN_Array::STRUCT, VORTEN_Array::CELL}) {
    VORTEN_Array array = arrayOf(type, {1, 1});
    int marker = 0;
    DataAccessor accessor{array, true, &marker, &marker, 7.0};
    dispatch_on_QXType(array.type(), accessor);
    EXPECT_EQ(accessor.realData, &marker);
    EXPECT_EQ(accessor.imagData, &marker);
    EXPECT_EQ(accessor.scalar, 7.0);
    EXPECT_FALSE(hasTypedPart(array));
  }
}

TEST(DataOfProxies, IsNothingOfItsOwn) {
  for (const auto type : {VORTEN_Array::CHAR, VORTEN_Array::STRUCT, VORTEN_Array::CELL}) {
    VORTEN_Array array = arrayOf(type, {1, 1});
    const DataAccessor accessor = accessData(array, true);
    EXPECT_EQ(accessor.realData, nullptr);
    EXPECT_EQ(accessor.imagData, nullptr);
    EXPECT_EQ(accessor.scalar, 0.0);
  }
}

TEST(SparseData, OfDoublesHasBothPartsWhicheverAreWanted) {
  VORTEN_Array array = sparseOf(VORTEN_Array::Sparse::DOUBLE);
  VORTEN_Array::Double& values = *array.mutable_sparse()->mutable_qxsparsedouble();
  test::assign(values.mutable_elements(), {5, 6});
  test::assign(values.mutable_imag_elements(), {7, 8});
  for (const bool complex : {false, true}) {
    const DataAccessor accessor = accessData(array, complex);
    EXPECT_EQ(accessor.scalar, 5.0);
    EXPECT_EQ(accessor.realData, values.mutable_elements()->mutable_data());
    EXPECT_EQ(accessor.imagData, values.mutable_imag_elements()->mutable_data());
  }
}

TEST(SparseData, WithoutImaginaryPartsLeavesTheirPointer) {
  VORTEN_Array array = sparseOf(VORTEN_Array::Sparse::DOUBLE);
  int marker = 0;
  DataAccessor accessor{array, true, &marker, &marker, 7.0};
  dispatch_on_QXType(array.type(), accessor);
  EXPECT_EQ(accessor.scalar, 0.0);
  EXPECT_EQ(accessor.realData, nullptr);
  EXPECT_EQ(accessor.imagData, &marker);
  EXPECT_FALSE(accessor.isPresent);
  present(array);
  EXPECT_TRUE(array.sparse().has_qxsparsedouble());
}

TEST(SparseData, OfAnyOtherTypeIsLogical) {
  for (const auto type : {VORTEN_Array::Sparse::LOGICAL, VORTEN_Array::Sparse::SINGLE}) {
    VORTEN_Array array = sparseOf(type);
    array.mutable_sparse()->mutable_qxsparsesingle()->add_elements(9.0F);
    EXPECT_EQ(accessData(array, false).realData, nullptr);
    EXPECT_FALSE(accessData(array, false).isPresent);
    present(array);
    EXPECT_TRUE(array.sparse().has_logical());
    auto& elements = *array.mutable_sparse()->mutable_logical()->mutable_elements();
    test::assign(&elements, {1, 0});
    const DataAccessor accessor = accessData(array, true);
    EXPECT_EQ(accessor.scalar, 1.0);
    EXPECT_EQ(accessor.realData, elements.mutable_data());
    EXPECT_EQ(accessor.imagData, nullptr);
  }
}

TEST(SparseData, OfAMissingPartIsThatOfDoubles) {
  VORTEN_Array array = arrayOf(VORTEN_Array::SPARSE, {3, 3});
  EXPECT_EQ(accessData(array, false).realData, nullptr);
  EXPECT_FALSE(accessData(array, false).isPresent);
  present(array);
  EXPECT_TRUE(array.has_sparse());
  EXPECT_TRUE(array.sparse().has_qxsparsedouble());
}

}  // namespace
}  // namespace hcy
