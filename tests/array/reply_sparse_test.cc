// SPDX-License-Identifier: Apache-2.0
//
// Sparse arrays of a reply that this library would not have made.

#include <algorithm>
#include <cstdint>
#include <utility>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::arrayOf;
using test::Numbers;
using test::numbers;
using test::sparseOf;
using test::wrapped;

// A sparse array of a value type that the library has no class for.
ArrayHandle otherSparse(int type) {
  auto message = sparseOf(type, {3, 3}, {0, 2}, {0, 1, 2, 2});
  test::assign(message.mutable_sparse()->mutable_qxsparsesingle()->mutable_elements(), {5, 6});
  return wrapped(message);
}
constexpr int otherTypes[] = {VORTEN_Array::Sparse::SINGLE, 3, 100};

TEST(OtherSparse, HasClassNameAndSizeOfLogicals) {
  for (const int type : otherTypes) {
    const auto array = otherSparse(type);
    EXPECT_TRUE(hcyIsSparse(array.get()));
    EXPECT_EQ(hcyGetClassID(array.get()), hcyLOGICAL_CLASS);
    EXPECT_STREQ(hcyGetClassName(array.get()), "logical");
    EXPECT_EQ(hcyGetElementSize(array.get()), 1U);
    EXPECT_FALSE(hcyIsNumeric(array.get()));
    EXPECT_FALSE(hcyIsComplex(array.get()));
  }
}

TEST(OtherSparse, IsOfNoClassByThePredicates) {
  for (const int type : otherTypes) {
    const auto array = otherSparse(type);
    EXPECT_FALSE(hcyIsLogical(array.get()));
    EXPECT_FALSE(hcyIsDouble(array.get()));
    EXPECT_FALSE(hcyIsSingle(array.get()));
    for (const char* const name : {"logical", "double", "single", "sparse", ""}) {
      EXPECT_FALSE(hcyIsClass(array.get(), name)) << name;
    }
  }
}

TEST(OtherSparse, HasIndicesButNoValues) {
  for (const int type : otherTypes) {
    const auto array = otherSparse(type);
    EXPECT_EQ(hcyGetNzmax(array.get()), 2U);
    EXPECT_EQ(hcyGetIr(array.get())[1], 2U);
    EXPECT_EQ(hcyGetJc(array.get())[2], 2U);
    EXPECT_EQ(hcyGetData(array.get()), nullptr);
    EXPECT_EQ(hcyGetPr(array.get()), nullptr);
    EXPECT_EQ(hcyGetLogicals(array.get()), nullptr);
    EXPECT_EQ(hcyGetScalar(array.get()), 0.0);
  }
}

TEST(OtherSparse, HasLogicalsResizedWithItsRoom) {
  for (const int type : otherTypes) {
    const auto array = otherSparse(type);
    hcySetNzmax(array.get(), 3);
    const VORTEN_Array::Sparse& sparse = dataOf(array.get()).sparse();
    EXPECT_EQ(numbers(sparse.ir()), (Numbers{0, 2, 0}));
    EXPECT_EQ(numbers(sparse.logical().elements()), Numbers(3, 0.0));
    EXPECT_EQ(numbers(sparse.qxsparsesingle().elements()), (Numbers{5, 6}));
  }
}

TEST(SparseWithoutItsPart, IsOfDoublesWithoutIndices) {
  const auto array = wrapped(arrayOf(VORTEN_Array::SPARSE, {3, 3}));
  EXPECT_TRUE(hcyIsDouble(array.get()));
  EXPECT_TRUE(hcyIsNumeric(array.get()));
  EXPECT_EQ(hcyGetNzmax(array.get()), 0U);
  EXPECT_EQ(hcyGetIr(array.get()), nullptr);
  EXPECT_EQ(hcyGetJc(array.get()), nullptr);
  EXPECT_EQ(hcyGetPr(array.get()), nullptr);
  EXPECT_FALSE(test::sent(array).has_sparse()) << "sent as it came";
}

TEST(SparseWithoutItsPart, GetsRoomAndStarts) {
  const auto array = wrapped(arrayOf(VORTEN_Array::SPARSE, {3, 3}));
  hcySetNzmax(array.get(), 2);
  hcySetN(array.get(), 4);
  const VORTEN_Array::Sparse& sparse = dataOf(array.get()).sparse();
  EXPECT_EQ(numbers(sparse.ir()), Numbers(2, 0.0));
  EXPECT_EQ(numbers(sparse.qxsparsedouble().elements()), Numbers(2, 0.0));
  EXPECT_EQ(numbers(sparse.jc()), Numbers(5, 0.0));
}

TEST(SparseOfFewerValues, GetsThemWithItsRoom) {
  auto message = sparseOf(VORTEN_Array::Sparse::DOUBLE, {3, 3}, {0, 1, 2}, {0, 3, 3, 3});
  test::assign(message.mutable_sparse()->mutable_qxsparsedouble()->mutable_elements(), {5});
  test::assign(message.mutable_sparse()->mutable_qxsparsedouble()->mutable_imag_elements(), {6});
  const auto array = wrapped(message);
  EXPECT_TRUE(hcyIsComplex(array.get()));
  EXPECT_EQ(hcyGetNzmax(array.get()), 3U);
  hcySetNzmax(array.get(), 3);
  const VORTEN_Array::Double& values = dataOf(array.get()).sparse().qxsparsedouble();
  EXPECT_EQ(numbers(values.elements()), (Numbers{5, 0, 0}));
  EXPECT_EQ(numbers(values.imag_elements()), (Numbers{6, 0, 0}));
}

TEST(SparseReply, IsBroughtInStepByItsOwnRowsAndRoom) {
  auto message = sparseOf(VORTEN_Array::Sparse::DOUBLE, {3, 3}, {0, 1, 2}, {0});
  const auto array = wrapped(message);
  hcySetM(array.get(), hcyGetM(array.get()));
  hcySetNzmax(array.get(), hcyGetNzmax(array.get()));
  const VORTEN_Array::Sparse& sparse = dataOf(array.get()).sparse();
  EXPECT_EQ(numbers(sparse.ir()), (Numbers{0, 1, 2}));
  EXPECT_EQ(numbers(sparse.jc()), Numbers(4, 0.0));
  EXPECT_EQ(numbers(sparse.qxsparsedouble().elements()), Numbers(3, 0.0));
}

// One element is described, and there is room for three.
TEST(SparseReply, HasRoomForAsManyElementsAsThereAreOfEachPart) {
  for (const bool isComplex : {false, true}) {
    auto message = sparseOf(VORTEN_Array::Sparse::DOUBLE, {3, 3}, {0, 1, 2}, {0, 1, 1, 1});
    auto& values = *message.mutable_sparse()->mutable_qxsparsedouble();
    test::assign(values.mutable_elements(), {1, 2, 3});
    if (isComplex) test::assign(values.mutable_imag_elements(), {4, 5});
    const auto array = wrapped(message);
    EXPECT_EQ(hcyGetNzmax(array.get()), isComplex ? 2U : 3U);
    EXPECT_EQ(hcyGetPi(array.get()) != nullptr, isComplex);
  }
}

TEST(SparseReply, OfMoreRoomThanElementsIsBroughtInStepToo) {
  const auto array = wrapped(sparseOf(VORTEN_Array::Sparse::DOUBLE, {1, 1}, {0, 0, 0}, {0, 1}));
  hcySetNzmax(array.get(), std::min(hcyGetNzmax(array.get()), hcyGetNumberOfElements(array.get())));
  const VORTEN_Array::Sparse& sparse = dataOf(array.get()).sparse();
  EXPECT_EQ(sparse.ir_size(), 1);
  EXPECT_EQ(sparse.qxsparsedouble().elements_size(), sparse.ir_size());
}

TEST(SparseWithoutDimensions, IsEmptyAndStaysIt) {
  for (const int type : {VORTEN_Array::Sparse::DOUBLE, VORTEN_Array::Sparse::LOGICAL}) {
    const auto array = wrapped(sparseOf(type, {}, {0}, {0, 1}));
    hcySetM(array.get(), 5);
    EXPECT_EQ(hcyGetM(array.get()), 0U);
    EXPECT_EQ(hcyGetN(array.get()), 0U);
    EXPECT_EQ(hcyGetNumberOfDimensions(array.get()), 0U);
    EXPECT_EQ(hcyGetDimensions(array.get()), nullptr);
    EXPECT_EQ(hcyGetNumberOfElements(array.get()), 0U);
    EXPECT_TRUE(hcyIsEmpty(array.get()));
    EXPECT_FALSE(hcyIsLogicalScalar(array.get()));
  }
}

TEST(SparseWithoutDimensions, HasNoRoomToSetAndNoColumns) {
  const auto array = wrapped(sparseOf(VORTEN_Array::Sparse::DOUBLE, {}, {0}, {0, 1}));
  hcySetNzmax(array.get(), 5);
  EXPECT_EQ(hcyGetNzmax(array.get()), 0U);
  EXPECT_EQ(dataOf(array.get()).sparse().ir_size(), 1);
  hcySetN(array.get(), 5);
  EXPECT_EQ(numbers(dataOf(array.get()).sparse().jc()), (Numbers{0, 1}));
}

// A 1-by-1 sparse logical array.
bool isTrue(std::initializer_list<int> starts, std::initializer_list<int> values) {
  auto message = sparseOf(VORTEN_Array::Sparse::LOGICAL, {1, 1}, {0}, starts);
  test::assign(message.mutable_sparse()->mutable_logical()->mutable_elements(), values);
  const auto array = wrapped(message);
  EXPECT_TRUE(hcyIsLogicalScalar(array.get()));
  return hcyIsLogicalScalarTrue(array.get());
}

TEST(SparseLogicalScalarReply, IsTrueWhenItStoresOneElementThatIs) {
  EXPECT_TRUE(isTrue({0, 1}, {1}));
  EXPECT_FALSE(isTrue({0, 1}, {0}));
}

TEST(SparseLogicalScalarReply, IsNotTrueWhenItsStorageIsShort) {
  EXPECT_FALSE(isTrue({}, {1}));
  EXPECT_FALSE(isTrue({0}, {1}));
  EXPECT_FALSE(isTrue({0, 0}, {1}));
  EXPECT_FALSE(isTrue({1, 1}, {1}));
  EXPECT_FALSE(isTrue({0, 1}, {}));
}

TEST(SparseLogicalScalarReply, DoesNotReadTheFullPart) {
  auto message = sparseOf(VORTEN_Array::Sparse::LOGICAL, {1, 1}, {0}, {0, 0});
  message.mutable_logical()->add_elements(true);
  EXPECT_FALSE(hcyIsLogicalScalarTrue(wrapped(message).get()));
}

}  // namespace
}  // namespace hcy
