// SPDX-License-Identifier: Apache-2.0
//
// Elements that several handles and containers share.

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

// The classes whose handles work on contents of their own, which a setter hands on.
bool worksOnItsOwn(const ArrayKind& kind) {
  return kind.facts().storage == ElementStorage::Widened || kind.isContainer();
}
std::vector<ArrayKind> sharedKinds() {
  return kindsThat([](const ArrayKind& kind) { return !worksOnItsOwn(kind); });
}
std::vector<ArrayKind> ownKinds() { return kindsThat(worksOnItsOwn); }

// The filling with another first value.
std::vector<double> changedFilling(const ArrayKind& kind, std::size_t count) {
  std::vector<double> values = filling(kind, count);
  values[0] = 0.0;
  return values;
}

class SharedElement : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, SharedElement, testing::ValuesIn(sharedKinds()), kindName);

TEST_P(SharedElement, ShowsAChangeThroughEveryHandle) {
  const Array value = filledMatrix(GetParam(), 2, 1);
  const Array cell = cellWith(value);
  const Array first = hcyGetCell(cell, 0);
  const Array second = hcyGetCell(cell, 0);
  setValue(first, 0, 0.0);
  EXPECT_EQ(valuesOf(second), changedFilling(GetParam(), 2));
  EXPECT_EQ(valuesOf(value), changedFilling(GetParam(), 2));
  EXPECT_EQ(dataOf(first), dataOf(value));
}

TEST_P(SharedElement, ShowsAChangeOfTheValueInEveryPlaceItIsStored) {
  const Array value = filledMatrix(GetParam(), 2, 1);
  const Array cell = cellWith(value);
  const Array structure = hcyCreateStructMatrix(1, 2, fieldCount, fieldNames);
  hcySetField(structure, 0, "second", value);
  hcySetField(structure, 1, "first", value);
  setValue(value, 0, 0.0);
  const std::vector<double> changed = changedFilling(GetParam(), 2);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), changed);
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 0, "second"))), changed);
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 1, "first"))), changed);
}

TEST_P(SharedElement, DoesNotMoveWhileItsContainerChanges) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 1));
  const Array element = hcyGetCell(cell, 0);
  const void* const data = dataOf(element);
  hcySetN(cell, 300);
  const Array copy = hcyDuplicateArray(cell);
  hcySetCell(cell, 1, copy);
  EXPECT_EQ(dataOf(element), data);
  EXPECT_EQ(dataOf(Array(hcyGetCell(cell, 0))), data);
  EXPECT_EQ(valuesOf(element), filling(GetParam(), 2));
}

TEST_P(SharedElement, GrowsForEveryHandle) {
  const Array value = filledMatrix(GetParam(), 1, 2);
  const Array cell = cellWith(value);
  hcySetN(Array(hcyGetCell(cell, 0)), 3);
  std::vector<double> grown = filling(GetParam(), 2);
  if (!GetParam().isSparse) grown.push_back(0.0);
  EXPECT_EQ(valuesOf(value), grown);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), grown);
}

class OwnContents : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, OwnContents, testing::ValuesIn(ownKinds()), kindName);

TEST_P(OwnContents, AreStoredAsTheyWereWrittenBefore) {
  const Array value = filledMatrix(GetParam(), 2, 1);
  setValue(value, 0, 0.0);
  const Array cell = cellWith(value);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), changedFilling(GetParam(), 2));
}

TEST_P(OwnContents, ReachTheContainerWhenTheElementIsStoredBack) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 1));
  const Array element = hcyGetCell(cell, 0);
  setValue(element, 0, 0.0);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), filling(GetParam(), 2));
  hcySetCell(cell, 0, element);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), changedFilling(GetParam(), 2));
}

TEST_P(OwnContents, ReachAStructWhenTheElementIsStoredBack) {
  const Array structure = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  hcySetField(structure, 0, "first", filledMatrix(GetParam(), 2, 1));
  const Array element = hcyGetField(structure, 0, "first");
  setValue(element, 0, 0.0);
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 0, "first"))), filling(GetParam(), 2));
  hcySetFieldByNumber(structure, 0, 0, element);
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 0, "first"))), changedFilling(GetParam(), 2));
}

TEST_P(OwnContents, ReachTheContainerWhenTheElementIsDuplicated) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 1));
  const Array element = hcyGetCell(cell, 0);
  setValue(element, 0, 0.0);
  const Array copy = hcyDuplicateArray(element);
  EXPECT_EQ(valuesOf(copy), changedFilling(GetParam(), 2));
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), changedFilling(GetParam(), 2));
}

TEST_P(OwnContents, StoredLastWin) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 1));
  const Array first = hcyGetCell(cell, 0);
  const Array second = hcyGetCell(cell, 0);
  setValue(first, 0, 0.0);
  setValue(second, 0, 7.0);
  hcySetCell(cell, 0, second);
  hcySetCell(cell, 0, first);
  EXPECT_EQ(valueAt(Array(hcyGetCell(cell, 0)), 0), 0.0);
  hcySetCell(cell, 0, second);
  EXPECT_EQ(valueAt(Array(hcyGetCell(cell, 0)), 0), 7.0);
}

TEST_P(OwnContents, OfTwoHandlesAreTwo) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 1));
  const Array first = hcyGetCell(cell, 0);
  const Array second = hcyGetCell(cell, 0);
  setValue(first, 0, 0.0);
  EXPECT_EQ(valuesOf(second), filling(GetParam(), 2));
}

class Element : public testing::TestWithParam<ArrayKind> {};
INSTANTIATE_TEST_SUITE_P(All, Element, testing::ValuesIn(allKinds()), kindName);

TEST_P(Element, OutlivesItsContainer) {
  Array cell = cellWith(filledMatrix(GetParam(), 2, 2));
  const Array element = hcyGetCell(cell, 0);
  cell.destroy();
  EXPECT_EQ(valuesOf(element), filling(GetParam(), 4));
  setValue(element, 0, 0.0);
  EXPECT_EQ(valueAt(element, 0), 0.0);
}

TEST_P(Element, OutlivesTheHandleItWasStoredBy) {
  Array value = filledMatrix(GetParam(), 2, 2);
  const Array cell = cellWith(value);
  value.destroy();
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), filling(GetParam(), 4));
}

TEST_P(Element, OfTwoContainersOutlivesOne) {
  const Array value = filledMatrix(GetParam(), 2, 2);
  Array cell = cellWith(value);
  const Array structure = hcyCreateStructMatrix(1, 1, fieldCount, fieldNames);
  hcySetField(structure, 0, "first", value);
  cell.destroy();
  EXPECT_EQ(valuesOf(Array(hcyGetField(structure, 0, "first"))), filling(GetParam(), 4));
}

TEST_P(Element, OfACopiedContainerIsCopiedToo) {
  const Array value = filledMatrix(GetParam(), 2, 2);
  const Array cell = cellWith(value);
  const Array copy = hcyDuplicateArray(cell);
  const Array element = hcyGetCell(cell, 0);
  setValue(element, 0, 0.0);
  hcySetCell(cell, 0, element);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(copy, 0))), filling(GetParam(), 4));
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), changedFilling(GetParam(), 4));
}

TEST_P(Element, OfACopyChangesAlone) {
  const Array cell = cellWith(filledMatrix(GetParam(), 2, 2));
  const Array copy = hcyDuplicateArray(cell);
  const Array element = hcyGetCell(copy, 0);
  setValue(element, 0, 0.0);
  hcySetCell(copy, 0, element);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(cell, 0))), filling(GetParam(), 4));
}

TEST_P(Element, OfACopyIsAsTheElementWasThen) {
  const Array value = filledMatrix(GetParam(), 2, 2);
  const Array cell = cellWith(value);
  setValue(value, 0, 0.0);
  hcySetCell(cell, 0, value);
  const Array copy = hcyDuplicateArray(cell);
  EXPECT_EQ(valuesOf(Array(hcyGetCell(copy, 0))), changedFilling(GetParam(), 4));
}

TEST_P(Element, HasOneShapeForAllItsHandles) {
  const Array value = filledMatrix(GetParam(), 1, 2);
  const Array cell = cellWith(value);
  const Array earlier = hcyGetCell(cell, 0);
  hcySetN(Array(hcyGetCell(cell, 0)), 3);
  EXPECT_EQ(shapeOf(value), (Shape{1, 3}));
  EXPECT_EQ(shapeOf(earlier), (Shape{1, 3}));
  EXPECT_EQ(shapeOf(Array(hcyGetCell(cell, 0))), (Shape{1, 3}));
}

}  // namespace
}  // namespace hcy::abi
