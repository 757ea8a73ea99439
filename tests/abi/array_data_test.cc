// SPDX-License-Identifier: Apache-2.0
//
// Which getter serves which class, and what is behind the pointers.

#include <cstdint>
#include <span>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

class DataPointers : public testing::TestWithParam<ArrayKind> {
 protected:
  bool isOf(hcyClassID id) const { return GetParam().id == id; }
};
INSTANTIATE_TEST_SUITE_P(All, DataPointers, testing::ValuesIn(allKinds()), kindName);

TEST_P(DataPointers, AreGivenByTheGettersOfTheClassOnly) {
  const Array array = createMatrix(GetParam(), 2, 2);
  EXPECT_EQ(hcyGetPr(array) != nullptr, isOf(hcyDOUBLE_CLASS));
  EXPECT_EQ(hcyGetData(array) != nullptr, GetParam().isNumeric());
  EXPECT_EQ(hcyGetLogicals(array) != nullptr, isOf(hcyLOGICAL_CLASS));
  EXPECT_EQ(hcyGetChars(array) != nullptr, isOf(hcyCHAR_CLASS));
  EXPECT_EQ(hcyGetPi(array), nullptr);
  EXPECT_EQ(hcyGetImagData(array), nullptr);
}

TEST_P(DataPointers, AreNullWithoutElements) {
  const Array array = createMatrix(GetParam(), 0, 3);
  EXPECT_EQ(hcyGetPr(array), nullptr);
  EXPECT_EQ(hcyGetPi(array), nullptr);
  EXPECT_EQ(hcyGetData(array), nullptr);
  EXPECT_EQ(hcyGetImagData(array), nullptr);
  EXPECT_EQ(hcyGetLogicals(array), nullptr);
  EXPECT_EQ(hcyGetChars(array), nullptr);
}

TEST_P(DataPointers, GiveWhatWasWritten) {
  const Array array = filledMatrix(GetParam(), 3, 4);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 12));
}

class ImaginaryParts : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ImaginaryParts, testing::ValuesIn(numericKinds()), kindName);

TEST_P(ImaginaryParts, HaveStorageBesideTheRealOnes) {
  const Array array = filledComplexMatrix(GetParam(), 2, 2);
  EXPECT_EQ(valuesOf(array), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(imaginaryOf(array), (std::vector<double>{11, 12, 13, 14}));
}

TEST_P(ImaginaryParts, AreGivenByThePointersOfDoublesToo) {
  const Array array = filledComplexMatrix(GetParam(), 2, 2);
  const bool isDouble = GetParam().id == hcyDOUBLE_CLASS;
  EXPECT_EQ(hcyGetPr(array), isDouble ? hcyGetData(array) : nullptr);
  EXPECT_EQ(hcyGetPi(array), isDouble ? hcyGetImagData(array) : nullptr);
}

// The first element of a 1-by-2 array, written as it lies in the caller's memory.
template <class Element>
double scalarOf(hcyClassID id, Element first) {
  const Array array = hcyCreateNumericMatrix(1, 2, id, hcyREAL);
  const std::span elements(static_cast<Element*>(hcyGetData(array)), 2);
  elements[0] = first;
  elements[1] = 77;
  return hcyGetScalar(array);
}

TEST(Scalar, OfAUint8ArrayReadsASignedByte) {
  EXPECT_EQ(scalarOf<std::uint8_t>(hcyUINT8_CLASS, 200), -56.0);
  EXPECT_EQ(scalarOf<std::uint8_t>(hcyUINT8_CLASS, 127), 127.0);
  EXPECT_EQ(scalarOf<std::uint8_t>(hcyUINT8_CLASS, 128), -128.0);
}

TEST(Scalar, IsTheFirstIntegerAsADouble) {
  EXPECT_EQ(scalarOf<std::int8_t>(hcyINT8_CLASS, -3), -3.0);
  EXPECT_EQ(scalarOf<std::uint16_t>(hcyUINT16_CLASS, 65535), 65535.0);
  EXPECT_EQ(scalarOf<std::int16_t>(hcyINT16_CLASS, -32768), -32768.0);
  EXPECT_EQ(scalarOf<std::uint32_t>(hcyUINT32_CLASS, 4294967295U), 4294967295.0);
  EXPECT_EQ(scalarOf<std::int32_t>(hcyINT32_CLASS, INT32_MIN), -2147483648.0);
  EXPECT_EQ(scalarOf<std::int64_t>(hcyINT64_CLASS, INT64_MIN), -9223372036854775808.0);
}

TEST(Scalar, OfAUint64ArrayIsUnsignedAndRoundedToNearest) {
  EXPECT_EQ(scalarOf<std::uint64_t>(hcyUINT64_CLASS, UINT64_MAX), 1.8446744073709552e19);
  EXPECT_EQ(scalarOf<std::uint64_t>(hcyUINT64_CLASS, 0x8000000000000400U), 0x1p63);
  EXPECT_EQ(scalarOf<std::uint64_t>(hcyUINT64_CLASS, 0x8000000000000401U), 0x1.0000000000001p63);
}

TEST(Scalar, IsTheFirstFloatingPointNumber) {
  EXPECT_EQ(scalarOf<float>(hcySINGLE_CLASS, 0.1F), static_cast<double>(0.1F));
  EXPECT_EQ(scalarOf<double>(hcyDOUBLE_CLASS, 0.1), 0.1);
}

TEST(Scalar, OfLogicalsIsZeroOrOne) {
  EXPECT_EQ(hcyGetScalar(Array(hcyCreateLogicalScalar(true))), 1.0);
  EXPECT_EQ(hcyGetScalar(Array(hcyCreateLogicalScalar(false))), 0.0);
}

TEST(Scalar, OfATextIsItsFirstCodeUnit) {
  EXPECT_EQ(hcyGetScalar(Array(hcyCreateString("Az"))), 65.0);
  EXPECT_EQ(hcyGetScalar(Array(hcyCreateString("\xFF"))), 65535.0);
}

TEST(Scalar, OfASparseArrayIsItsFirstStoredElement) {
  const Array doubles = hcyCreateSparse(3, 3, 2, hcyREAL);
  hcyGetPr(doubles)[0] = -2.5;
  EXPECT_EQ(hcyGetScalar(doubles), -2.5);
  const Array logicals = hcyCreateSparseLogicalMatrix(3, 3, 2);
  hcyGetLogicals(logicals)[0] = true;
  EXPECT_EQ(hcyGetScalar(logicals), 1.0);
}

class ScalarOf : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, ScalarOf, testing::ValuesIn(allKinds()), kindName);

TEST_P(ScalarOf, IsTheFirstElementOrZeroForAContainer) {
  const Array array = filledMatrix(GetParam(), 2, 2);
  EXPECT_EQ(hcyGetScalar(array), GetParam().isContainer() ? 0.0 : 1.0);
}

TEST_P(ScalarOf, IsZeroWithoutElements) {
  EXPECT_EQ(hcyGetScalar(Array(createMatrix(GetParam(), 0, 3))), 0.0);
}

TEST_P(ScalarOf, IsRealForAComplexArray) {
  if (!GetParam().isNumeric()) return;
  EXPECT_EQ(hcyGetScalar(filledComplexMatrix(GetParam(), 2, 2)), 1.0);
}

}  // namespace
}  // namespace hcy::abi
