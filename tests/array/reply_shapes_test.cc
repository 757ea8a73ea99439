// SPDX-License-Identifier: Apache-2.0
//
// Arrays of a reply whose storage disagrees with their dimensions.

#include <cstdint>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::Numbers;
using test::numbers;
using test::wrapped;

template <class Class>
class NumericReply : public testing::Test {};
TYPED_TEST_SUITE(NumericReply, test::NumericClasses, test::ClassNames);

TYPED_TEST(NumericReply, WithoutItsPartHasNoDataUntilItIsResized) {
  const auto array = wrapped(arrayOf(TypeParam::type, {2, 3}));
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), 6U);
  EXPECT_FALSE(hcyIsEmpty(array.get()));
  EXPECT_EQ(hcyGetData(array.get()), nullptr);
  EXPECT_EQ(hcyGetImagData(array.get()), nullptr);
  EXPECT_EQ(hcyGetScalar(array.get()), 0.0);
  hcySetM(array.get(), 2);
  EXPECT_NE(hcyGetData(array.get()), nullptr);
  EXPECT_EQ(numbers(TypeParam::read(test::committed(array)).elements()), Numbers(6, 0.0));
}

TYPED_TEST(NumericReply, OfFewerElementsGetsTheRestByAResize) {
  auto message = test::complexRowOf<TypeParam>({1, 2}, {3});
  message.set_dimension(1, 4);
  const auto array = wrapped(message);
  EXPECT_TRUE(hcyIsComplex(array.get()));
  EXPECT_EQ(hcyGetData(array.get()), nullptr);
  EXPECT_EQ(hcyGetImagData(array.get()), nullptr);
  EXPECT_EQ(hcyGetScalar(array.get()), 1.0);
  EXPECT_EQ(numbers(TypeParam::read(test::sent(array)).elements()), (Numbers{1, 2}));
  hcySetM(array.get(), 1);
  EXPECT_NE(hcyGetData(array.get()), nullptr);
  EXPECT_NE(hcyGetImagData(array.get()), nullptr);
  const VORTEN_Array completed = test::committed(array);
  const auto& part = TypeParam::read(completed);
  EXPECT_EQ(numbers(part.elements()), (Numbers{1, 2, 0, 0}));
  EXPECT_EQ(numbers(part.imag_elements()), (Numbers{3, 0, 0, 0}));
}

TYPED_TEST(NumericReply, IsRealWithoutImaginaryPartsWhateverItClaims) {
  auto message = test::rowOf<TypeParam>({1, 2});
  message.set_iscomplex(true);
  const auto array = wrapped(message);
  EXPECT_FALSE(hcyIsComplex(array.get()));
  EXPECT_EQ(hcyGetImagData(array.get()), nullptr);
}

TEST(LogicalReply, WithoutItsElementIsAScalarThatIsNotTrue) {
  const auto array = wrapped(arrayOf(VORTEN_Array::LOGICAL, {1, 1}));
  EXPECT_TRUE(hcyIsLogicalScalar(array.get()));
  EXPECT_FALSE(hcyIsLogicalScalarTrue(array.get()));
  EXPECT_EQ(hcyGetLogicals(array.get()), nullptr);
  EXPECT_FALSE(test::sent(array).has_logical()) << "sent as it came";
}

TEST(ReplyWithoutAType, IsOfUint8) {
  VORTEN_Array message;
  message.mutable_uint8()->set_elements("\x05");
  const auto array = wrapped(message);
  EXPECT_TRUE(hcyIsUint8(array.get()));
  EXPECT_EQ(hcyGetClassID(array.get()), hcyUINT8_CLASS);
  EXPECT_EQ(hcyGetScalar(array.get()), 5.0);
}

template <class Class>
class AnyReply : public testing::Test {};
TYPED_TEST_SUITE(AnyReply, test::FullClasses, test::ClassNames);

TYPED_TEST(AnyReply, WithoutDimensionsIsEmpty) {
  const auto array = wrapped(arrayOf(TypeParam::type, {}));
  EXPECT_EQ(hcyGetM(array.get()), 0U);
  EXPECT_EQ(hcyGetN(array.get()), 0U);
  EXPECT_EQ(hcyGetNumberOfDimensions(array.get()), 0U);
  EXPECT_EQ(hcyGetDimensions(array.get()), nullptr);
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), 0U);
  EXPECT_TRUE(hcyIsEmpty(array.get()));
  EXPECT_FALSE(hcyIsLogicalScalar(array.get()));
  const std::size_t subs[] = {5, 5};
  EXPECT_EQ(hcyCalcSingleSubscript(array.get(), 2, subs), 0U);
}

TYPED_TEST(AnyReply, WithoutDimensionsIgnoresOneOfThem) {
  const auto array = wrapped(arrayOf(TypeParam::type, {}));
  hcySetM(array.get(), 3);
  hcySetN(array.get(), 3);
  EXPECT_EQ(hcyGetNumberOfDimensions(array.get()), 0U);
  const std::size_t dims[] = {2, 2};
  EXPECT_EQ(hcySetDimensions(array.get(), dims, 2), 0);
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), 4U);
}

TYPED_TEST(AnyReply, OfOneDimensionHasRowsOnly) {
  const auto array = wrapped(arrayOf(TypeParam::type, {3}));
  EXPECT_EQ(hcyGetM(array.get()), 3U);
  EXPECT_EQ(hcyGetN(array.get()), 0U);
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), 3U);
  hcySetN(array.get(), 5);
  EXPECT_EQ(hcyGetNumberOfDimensions(array.get()), 1U);
  hcySetM(array.get(), 4);
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), 4U);
}

TYPED_TEST(AnyReply, OfHugeDimensionsDoesNotWrap) {
  const auto array = wrapped(arrayOf(TypeParam::type, {std::uint64_t{1} << 63, 2}));
  EXPECT_EQ(hcyGetNumberOfElements(array.get()), SIZE_MAX);
  EXPECT_FALSE(hcyIsEmpty(array.get()));
  EXPECT_EQ(hcyGetN(array.get()), 2U);
}

// A char array whose storage holds other code units than its one dimension says.
ArrayHandle textOf(std::uint64_t length, std::initializer_list<int> units) {
  auto message = test::rowOf<CHAR_class>(units);
  message.set_dimension(1, length);
  return wrapped(message);
}

TEST(TextReply, OfFewerCodeUnitsIsCopiedWithNulForTheRest) {
  const auto array = textOf(5, {'a', 'b'});
  std::string buffer(8, '#');
  EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 8), 0);
  EXPECT_EQ(buffer, std::string("ab\0\0\0\0##", 8));
  buffer.assign(8, '#');
  EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 4), 1);
  EXPECT_EQ(buffer, std::string("ab\0\0####", 8));
  buffer.assign(8, '#');
  EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 2), 1);
  EXPECT_EQ(buffer, std::string("a\0######", 8));
}

TEST(TextReply, OfMoreCodeUnitsIsCopiedToItsNumberOfElements) {
  const auto array = textOf(2, {'a', 'b', 'c'});
  std::string buffer(5, '#');
  EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 5), 0);
  EXPECT_EQ(buffer, std::string("ab\0##", 5));
}

TEST(TextReply, OfHugeLengthIsCut) {
  const auto array = textOf(SIZE_MAX, {'a'});
  std::string buffer(4, '#');
  EXPECT_EQ(hcyGetString(array.get(), buffer.data(), 4), 1);
  EXPECT_EQ(buffer, std::string("a\0\0\0", 4));
}

TEST(TextReply, IsReadAsUtf8FromItsStorage) {
  const std::unique_ptr<char, void (*)(void*)> text(hcyArrayToString(textOf(5, {'a', 'b'}).get()),
                                                    hcyFree);
  EXPECT_STREQ(text.get(), "ab");
  EXPECT_EQ(hcyArrayToString(textOf(5, {}).get()), nullptr);
}

}  // namespace
}  // namespace hcy
