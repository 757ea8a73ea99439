// SPDX-License-Identifier: Apache-2.0
//
// Class, class name and size of every kind of array.

#include <cstdint>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

static_assert(sizeof(hcyClassID) == 4 && sizeof(hcyComplexity) == 4);
static_assert(hcyREAL == 0 && hcyCOMPLEX == 1);

// The whole table of classes, written out: the other tests take theirs from the library's list.
struct PublicClass {
  hcyClassID id;
  const char* name;
  std::size_t elementSize;
  bool isNumeric;
};
constexpr PublicClass publicClasses[] = {
    {hcyUINT8_CLASS, "uint8", 1, true},      {hcyINT8_CLASS, "int8", 1, true},
    {hcyUINT16_CLASS, "uint16", 2, true},    {hcyINT16_CLASS, "int16", 2, true},
    {hcyUINT32_CLASS, "uint32", 4, true},    {hcyINT32_CLASS, "int32", 4, true},
    {hcyUINT64_CLASS, "uint64", 8, true},    {hcyINT64_CLASS, "int64", 8, true},
    {hcySINGLE_CLASS, "single", 4, true},    {hcyDOUBLE_CLASS, "double", 8, true},
    {hcyLOGICAL_CLASS, "logical", 1, false}, {hcyCHAR_CLASS, "char", 2, false},
    {hcySTRUCT_CLASS, "struct", 8, false},   {hcyCELL_CLASS, "cell", 8, false},
};
static_assert(std::size(publicClasses) == classCount);

class Kind : public testing::TestWithParam<ArrayKind> {
 protected:
  const PublicClass& publicClass() const { return publicClasses[GetParam().id]; }
  const Array array_ = createMatrix(GetParam(), 2, 3);
};
INSTANTIATE_TEST_SUITE_P(All, Kind, testing::ValuesIn(allKinds()), kindName);

TEST_P(Kind, HasTheNumberNameAndElementSizeOfItsClass) {
  ASSERT_EQ(publicClass().id, GetParam().id);
  EXPECT_EQ(hcyGetClassID(array_), publicClass().id);
  EXPECT_STREQ(hcyGetClassName(array_), publicClass().name);
  EXPECT_EQ(hcyGetElementSize(array_), publicClass().elementSize);
}

TEST_P(Kind, HasAClassNameThatOutlivesIt) {
  const char* name = nullptr;
  {
    const Array array = createMatrix(GetParam(), 1, 1);
    name = hcyGetClassName(array);
  }
  EXPECT_STREQ(name, publicClass().name);
}

TEST_P(Kind, IsOfItsClassNameOnly) {
  for (const PublicClass& other : publicClasses) {
    EXPECT_EQ(hcyIsClass(array_, other.name), other.id == GetParam().id) << other.name;
  }
  for (const char* const name : {"", "sparse", "Double", "doubl", "doubles", "UINT8", "numeric"}) {
    EXPECT_FALSE(hcyIsClass(array_, name)) << name;
  }
}

TEST_P(Kind, IsToldByThePredicateOfItsClassOnly) {
  for (hcyClassID id = 0; id < classCount; ++id) {
    const bool looksIntoSparse = id == hcyDOUBLE_CLASS || id == hcyLOGICAL_CLASS;
    const bool expected = id == GetParam().id && (!GetParam().isSparse || looksIntoSparse);
    EXPECT_EQ(classFacts[id].predicate(array_), expected) << classFacts[id].identifier;
  }
  EXPECT_EQ(hcyIsSparse(array_), GetParam().isSparse);
}

TEST_P(Kind, IsNumericWhenItsClassIs) { EXPECT_EQ(hcyIsNumeric(array_), publicClass().isNumeric); }

TEST_P(Kind, IsComplexOnlyWhenMadeSo) {
  EXPECT_FALSE(hcyIsComplex(array_));
  if (!publicClass().isNumeric) return;
  EXPECT_TRUE(hcyIsComplex(Array(createMatrix(GetParam(), 1, 1, hcyCOMPLEX))));
}

TEST_P(Kind, IsEmptyWhenADimensionIsZero) {
  EXPECT_FALSE(hcyIsEmpty(array_));
  EXPECT_TRUE(hcyIsEmpty(Array(createMatrix(GetParam(), 0, 5))));
  EXPECT_TRUE(hcyIsEmpty(Array(createMatrix(GetParam(), 5, 0))));
  EXPECT_TRUE(hcyIsEmpty(Array(createMatrix(GetParam(), 0, 0))));
  if (!GetParam().isSparse) {
    EXPECT_TRUE(hcyIsEmpty(Array(createArray(GetParam(), {1, 1, 0}))));
  }
}

TEST_P(Kind, HasTheProductOfItsDimensionsAsNumberOfElements) {
  EXPECT_EQ(hcyGetNumberOfElements(array_), 6U);
  EXPECT_EQ(hcyGetNumberOfElements(Array(createMatrix(GetParam(), 0, 5))), 0U);
  if (GetParam().isSparse) return;
  EXPECT_EQ(hcyGetNumberOfElements(Array(createArray(GetParam(), {2, 3, 4}))), 24U);
}

TEST_P(Kind, IsALogicalScalarWhenLogicalAndOneByOne) {
  const bool isLogical = GetParam().id == hcyLOGICAL_CLASS;
  EXPECT_EQ(hcyIsLogicalScalar(Array(createMatrix(GetParam(), 1, 1))), isLogical);
  for (const Shape& shape : {Shape{1, 2}, Shape{2, 1}, Shape{0, 1}, Shape{1, 0}}) {
    EXPECT_FALSE(hcyIsLogicalScalar(Array(createMatrix(GetParam(), shape[0], shape[1]))));
  }
  if (GetParam().isSparse) return;
  EXPECT_FALSE(hcyIsLogicalScalar(Array(createArray(GetParam(), {1, 1, 1}))));
}

TEST_P(Kind, ThatIsNotLogicalIsNoTrueScalar) {
  if (GetParam().id == hcyLOGICAL_CLASS) return;
  EXPECT_FALSE(hcyIsLogicalScalarTrue(filledMatrix(GetParam(), 1, 1)));
}

TEST(LogicalScalar, IsTrueWhenItsElementIs) {
  EXPECT_TRUE(hcyIsLogicalScalarTrue(Array(hcyCreateLogicalScalar(true))));
  EXPECT_FALSE(hcyIsLogicalScalarTrue(Array(hcyCreateLogicalScalar(false))));
  const Array array = hcyCreateLogicalMatrix(1, 1);
  EXPECT_FALSE(hcyIsLogicalScalarTrue(array));
  *hcyGetLogicals(array) = true;
  EXPECT_TRUE(hcyIsLogicalScalarTrue(array));
}

TEST(LogicalScalar, IsNotTrueWhenItIsNoScalar) {
  const Array row = hcyCreateLogicalMatrix(1, 2);
  hcyGetLogicals(row)[0] = true;
  EXPECT_FALSE(hcyIsLogicalScalarTrue(row));
}

TEST(SparseLogicalScalar, AnswersByItsStoredElement) {
  const Array array = hcyCreateSparseLogicalMatrix(1, 1, 1);
  EXPECT_TRUE(hcyIsLogicalScalar(array));
  hcyGetLogicals(array)[0] = true;
  EXPECT_FALSE(hcyIsLogicalScalarTrue(array)) << "nothing is stored yet";
  hcyGetJc(array)[1] = 1;
  EXPECT_TRUE(hcyIsLogicalScalarTrue(array));
  hcyGetLogicals(array)[0] = false;
  EXPECT_FALSE(hcyIsLogicalScalarTrue(array));
}

TEST(SparseLogicalScalar, WithoutRoomIsNotTrue) {
  const Array array = hcyCreateSparseLogicalMatrix(1, 1, 0);
  hcyGetJc(array)[1] = 1;
  EXPECT_FALSE(hcyIsLogicalScalarTrue(array));
}

}  // namespace
}  // namespace hcy::abi
