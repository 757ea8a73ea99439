// SPDX-License-Identifier: Apache-2.0

#include "wire/array_attributes.h"

#include "support/array_messages.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::sparseOf;

struct Expected {
  VORTEN_Array::QXType type;
  const char* className;
  std::size_t elementSize;
  bool isNumeric;
};
constexpr Expected fullClasses[] = {
    {VORTEN_Array::UINT8, "uint8", 1, true},      {VORTEN_Array::INT8, "int8", 1, true},
    {VORTEN_Array::UINT16, "uint16", 2, true},    {VORTEN_Array::INT16, "int16", 2, true},
    {VORTEN_Array::UINT32, "uint32", 4, true},    {VORTEN_Array::INT32, "int32", 4, true},
    {VORTEN_Array::UINT64, "uint64", 8, true},    {VORTEN_Array::INT64, "int64", 8, true},
    {VORTEN_Array::SINGLE, "single", 4, true},    {VORTEN_Array::DOUBLE, "double", 8, true},
    {VORTEN_Array::LOGICAL, "logical", 1, false}, {VORTEN_Array::CHAR, "char", 2, false},
    {VORTEN_Array::STRUCT, "struct", 8, false},   {VORTEN_Array::CELL, "cell", 8, false},
};
constexpr Expected sparseDouble = fullClasses[VORTEN_Array::DOUBLE];
constexpr Expected sparseLogical = fullClasses[VORTEN_Array::LOGICAL];

void expectAttributes(const VORTEN_Array& message, const Expected& expected, bool isComplex) {
  const ArrayData array = test::dataOf(message);
  const std::string before = test::writtenBytes(array);
  const HcyArrayAttributesRetriever attributes = attributesOf(array);
  EXPECT_EQ(attributes.type, expected.type);
  EXPECT_STREQ(attributes.className, expected.className);
  EXPECT_EQ(attributes.elementSize, expected.elementSize) << expected.className;
  EXPECT_EQ(attributes.isNumeric, expected.isNumeric) << expected.className;
  EXPECT_EQ(attributes.isComplex, isComplex) << expected.className;
  EXPECT_EQ(test::writtenBytes(array), before) << "asking changed " << expected.className;
}

TEST(Attributes, OfEveryClassAreThoseOfItsRow) {
  ASSERT_EQ(std::size(fullClasses), 14U);
  for (const Expected& expected : fullClasses) {
    expectAttributes(arrayOf(expected.type, {0, 0}), expected, false);
  }
}

TEST(Attributes, OfAnArrayWithoutATypeAreThoseOfUint8) {
  expectAttributes(VORTEN_Array(), fullClasses[VORTEN_Array::UINT8], false);
}

TEST(Attributes, OfASparseArrayAreThoseOfItsValues) {
  expectAttributes(sparseOf(VORTEN_Array::Sparse::DOUBLE), sparseDouble, false);
  expectAttributes(sparseOf(VORTEN_Array::Sparse::LOGICAL), sparseLogical, false);
}

TEST(Attributes, OfASparseSingleArrayAreThoseOfLogicals) {
  VORTEN_Array array = sparseOf(VORTEN_Array::Sparse::SINGLE);
  array.mutable_sparse()->mutable_qxsparsesingle()->add_imag_elements(1.0F);
  expectAttributes(array, sparseLogical, false);
}

TEST(Attributes, OfAnEmptySparseMessageAreThoseOfDoubles) {
  expectAttributes(arrayOf(VORTEN_Array::SPARSE, {3, 3}), sparseDouble, false);
}

TEST(Attributes, OfASparseDoubleArrayTellItsImaginaryPart) {
  VORTEN_Array array = sparseOf(VORTEN_Array::Sparse::DOUBLE);
  array.mutable_sparse()->mutable_qxsparsedouble()->add_imag_elements(1.0);
  expectAttributes(array, sparseDouble, true);
}

TEST(Attributes, DoNotReadTheWiresComplexity) {
  for (const Expected& expected : fullClasses) {
    VORTEN_Array array = arrayOf(expected.type, {1, 1});
    array.set_iscomplex(true);
    expectAttributes(array, expected, false);
  }
}

template <class Class>
class NumericAttributes : public testing::Test {};
TYPED_TEST_SUITE(NumericAttributes, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericAttributes, TellAnImaginaryPart) {
  const Expected& expected = fullClasses[TypeParam::type];
  expectAttributes(test::rowOf<TypeParam>({1, 2}), expected, false);
  expectAttributes(test::complexRowOf<TypeParam>({1, 2}, {3, 4}), expected, true);
  VORTEN_Array array = test::complexRowOf<TypeParam>({1, 2}, {3, 4});
  array.set_iscomplex(false);
  expectAttributes(array, expected, true);
}

}  // namespace
}  // namespace hcy
