// SPDX-License-Identifier: Apache-2.0
//
// Containers stored in themselves and in each other.

#include <malloc.h>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

std::size_t bytesInUse() { return mallinfo2().uordblks; }

// Runs the work often enough that a leak of one array shows.
template <class Work>
void expectNoLeak(Work work) {
  work();
  const std::size_t before = bytesInUse();
  for (int i = 0; i < 1000; ++i) work();
  EXPECT_LT(bytesInUse(), before + 20'000);
}

// A 1-by-2 cell array of itself, as it was with 5 in its other element, and 5.
Array cellOfItself() {
  Array cell = hcyCreateCellMatrix(1, 2);
  hcySetCell(cell, 1, Array(hcyCreateDoubleScalar(5.0)));
  hcySetCell(cell, 0, cell);
  return cell;
}

void storeInEachOther() {
  const Array first = hcyCreateCellMatrix(1, 1);
  const Array second = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  hcySetCell(first, 0, second);
  hcySetField(second, 0, "first", first);
  hcySetCell(first, 0, second);
  const Array copy = hcyDuplicateArray(first);
  EXPECT_TRUE(hcyIsStruct(Array(hcyGetCell(copy, 0))));
}

TEST(CellOfItself, HoldsASnapshot) {
  const Array cell = cellOfItself();
  const Array snapshot = hcyGetCell(cell, 0);
  ASSERT_TRUE(hcyIsCell(snapshot));
  EXPECT_EQ(shapeOf(snapshot), (Shape{1, 2}));
  EXPECT_EQ(valueAt(snapshot, 1), 5.0);
  const Array beneath = hcyGetCell(snapshot, 0);
  EXPECT_EQ(hcyGetClassID(beneath), hcyDOUBLE_CLASS);
  EXPECT_EQ(shapeOf(beneath), (Shape{0, 0}));
}

TEST(CellOfItself, DoesNotChangeItsSnapshot) {
  const Array cell = cellOfItself();
  hcySetCell(cell, 1, Array(hcyCreateDoubleScalar(6.0)));
  EXPECT_EQ(valueAt(Array(hcyGetCell(cell, 0)), 1), 5.0);
  EXPECT_EQ(valueAt(cell, 1), 6.0);
}

TEST(CellOfItself, CanBeStoredSoAgain) {
  const Array cell = cellOfItself();
  hcySetCell(cell, 0, cell);
  const Array outer = hcyGetCell(cell, 0);
  const Array inner = hcyGetCell(outer, 0);
  EXPECT_TRUE(hcyIsCell(outer));
  EXPECT_TRUE(hcyIsCell(inner));
  EXPECT_EQ(valueAt(inner, 1), 5.0);
  EXPECT_FALSE(hcyIsCell(Array(hcyGetCell(inner, 0))));
}

TEST(CellOfItself, IsCopiedAndDoesNotLeak) {
  expectNoLeak([] {
    const Array copy = hcyDuplicateArray(cellOfItself());
    EXPECT_EQ(valueAt(Array(hcyGetCell(copy, 0)), 1), 5.0);
  });
}

TEST(CellOfItself, ByAnotherHandleOverItHoldsASnapshotToo) {
  const Array outer = hcyCreateCellMatrix(1, 1);
  hcySetCell(outer, 0, Array(hcyCreateCellMatrix(1, 2)));
  const Array one = hcyGetCell(outer, 0);
  const Array other = hcyGetCell(outer, 0);
  hcySetCell(other, 1, Array(hcyCreateDoubleScalar(5.0)));
  hcySetCell(one, 0, other);
  EXPECT_EQ(valueAt(Array(hcyGetCell(one, 0)), 1), 5.0);
  const Array copy = hcyDuplicateArray(one);
  EXPECT_EQ(valueAt(Array(hcyGetCell(copy, 0)), 1), 5.0);
}

TEST(StructOfItself, HoldsASnapshot) {
  const Array array = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  hcySetField(array, 0, "second", Array(hcyCreateDoubleScalar(5.0)));
  hcySetField(array, 0, "first", array);
  hcySetField(array, 0, "second", Array(hcyCreateDoubleScalar(6.0)));
  const Array snapshot = hcyGetField(array, 0, "first");
  ASSERT_TRUE(hcyIsStruct(snapshot));
  EXPECT_EQ(hcyGetScalar(Array(hcyGetField(snapshot, 0, "second"))), 5.0);
  EXPECT_TRUE(hcyIsEmpty(Array(hcyGetField(snapshot, 0, "first"))));
}

TEST(StructOfItself, DoesNotLeak) {
  expectNoLeak([] {
    const Array array = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
    hcySetFieldByNumber(array, 0, 0, array);
    const Array copy = hcyDuplicateArray(array);
  });
}

TEST(ContainersOfEachOther, NeitherHangNorLeak) { expectNoLeak(storeInEachOther); }

}  // namespace
}  // namespace hcy::abi
