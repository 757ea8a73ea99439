// SPDX-License-Identifier: Apache-2.0
//
// Pointers into an array stay where they are until its number of elements changes.

#include <cstdint>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

// Every pointer into its own storage that an array gives.
struct Pointers {
  const void* dimensions;
  const void* real;
  const void* imaginary;
  const void* rows;
  const void* columns;
  const void* fieldName;

  explicit Pointers(const hcyArray* array)
      : dimensions(hcyGetDimensions(array)),
        real(dataOf(array)),
        imaginary(hcyGetImagData(array)),
        rows(hcyGetIr(array)),
        columns(hcyGetJc(array)),
        fieldName(hcyGetFieldNameByNumber(array, 1)) {}

  bool operator==(const Pointers&) const = default;
};

// A complex array where there is one.
Array filled(const ArrayKind& kind) {
  return kind.isNumeric() ? filledComplexMatrix(kind, 3, 2) : filledMatrix(kind, 3, 2);
}

void createUseAndDestroyOthers() {
  for (const ArrayKind& kind : allKinds()) {
    for (std::size_t size = 0; size < 8; ++size) {
      const Array array = filledMatrix(kind, size, 3);
      const Array copy = hcyDuplicateArray(array);
      hcySetM(copy, size + 1);
    }
  }
}

class Pointer : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Pointer, testing::ValuesIn(allKinds()), kindName);

TEST_P(Pointer, IsTheSameWhenReadTwice) {
  const Array array = filled(GetParam());
  EXPECT_EQ(Pointers(array), Pointers(array));
}

TEST_P(Pointer, DoesNotMoveWhileOtherArraysComeAndGo) {
  const Array array = filled(GetParam());
  const Pointers before(array);
  createUseAndDestroyOthers();
  EXPECT_EQ(Pointers(array), before);
  EXPECT_EQ(valuesOf(array), filling(GetParam(), 6));
}

TEST_P(Pointer, DoesNotMoveWhenTheArrayIsAskedCopiedOrStored) {
  const Array array = filled(GetParam());
  const Pointers before(array);
  const Array copy = hcyDuplicateArray(array);
  const Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, array);
  hcyGetScalar(array);
  hcyGetElementSize(array);
  hcyIsClass(array, "cell");
  if (GetParam().isContainer()) setValue(array, 0, 3.0);
  EXPECT_EQ(Pointers(array), before);
}

TEST_P(Pointer, DoesNotMoveWhenTheSameShapeIsSetAgain) {
  const Array array = filled(GetParam());
  const Pointers before(array);
  hcySetM(array, 3);
  EXPECT_EQ(Pointers(array), before);
  hcySetN(array, 2);
  EXPECT_EQ(Pointers(array), before);
}

TEST_P(Pointer, ToTheDimensionsDoesNotMoveWhenOneIsSet) {
  const Array array = filled(GetParam());
  const std::size_t* const dimensions = hcyGetDimensions(array);
  hcySetN(array, 4);
  EXPECT_EQ(hcyGetDimensions(array), dimensions);
  hcySetM(array, 2);
  EXPECT_EQ(hcyGetDimensions(array), dimensions);
  EXPECT_EQ(shapeOf(array), (Shape{2, 4}));
}

TEST_P(Pointer, OfACopyIsAnother) {
  const Array array = filled(GetParam());
  const Array copy = hcyDuplicateArray(array);
  EXPECT_NE(Pointers(copy).dimensions, Pointers(array).dimensions);
  if (!GetParam().isContainer()) {
    EXPECT_NE(dataOf(copy), dataOf(array));
  }
}

TEST_P(Pointer, DoesNotMoveWhenARefusedCallChangesNothing) {
  const Array array = filled(GetParam());
  const Pointers before(array);
  EXPECT_EQ(hcySetDimensions(array, nullptr, 0), 1);
  hcySetNzmax(array, 7);
  hcyRemoveField(array, 2);
  EXPECT_EQ(Pointers(array), before);
}

TEST(NarrowPointer, SeesWhatIsWrittenThroughAnotherReadOfIt) {
  const Array array = hcyCreateNumericMatrix(1, 2, hcyUINT16_CLASS, hcyREAL);
  auto* const first = static_cast<std::uint16_t*>(hcyGetData(array));
  static_cast<std::uint16_t*>(hcyGetData(array))[1] = 12;
  EXPECT_EQ(first[1], 12);
}

}  // namespace
}  // namespace hcy::abi
