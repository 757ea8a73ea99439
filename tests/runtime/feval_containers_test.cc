// SPDX-License-Identifier: Apache-2.0
//
// Containers on their way to the server are only read.

#include <gtest/gtest.h>

#include <vector>

#include "runtime/reply_call.h"

namespace hcy::abi {
namespace {

using FevalContainers = ReplyCall;

// A 1-by-n cell whose elements are its own alone.
OwnedArray cellOf(const std::vector<double>& values) {
  OwnedArray cell(hcyCreateCellMatrix(1, values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) {
    hcySetCell(cell.get(), i, OwnedArray(hcyCreateDoubleScalar(values[i])).get());
  }
  return cell;
}

OwnedArray elementOf(const OwnedArray& cell, std::size_t index) {
  return OwnedArray(hcyGetCell(cell.get(), index));
}

std::vector<double> scalarsOf(const VORTEN_Array& cell) {
  std::vector<double> values;
  for (const VORTEN_Array& element : cell.cell().elements()) {
    values.push_back(element.qxdouble().elements(0));
  }
  return values;
}

TEST_F(FevalContainers, areNotChangedBySending) {
  const OwnedArray cell = cellOf({1, 2});
  EXPECT_EQ(scalarsOf(sent(cell.get())), (std::vector<double>{1, 2}));
  EXPECT_FALSE(dataOf(cell.get()).hasPart());
  EXPECT_EQ(dataOf(cell.get()).container().arrays, nullptr);
  EXPECT_EQ(hcyGetScalar(elementOf(cell, 1).get()), 2.0);
}

TEST_F(FevalContainers, areSentAgainWithWhatChangedInBetween) {
  const OwnedArray cell = cellOf({1, 2});
  EXPECT_EQ(scalarsOf(sent(cell.get())), (std::vector<double>{1, 2}));
  hcyGetPr(elementOf(cell, 0).get())[0] = 7;
  const OwnedArray copy(hcyDuplicateArray(cell.get()));
  EXPECT_EQ(scalarsOf(sent(cell.get())), (std::vector<double>{7, 2}));
  EXPECT_EQ(scalarsOf(sent(copy.get())), (std::vector<double>{7, 2}));
}

TEST_F(FevalContainers, mayOccurTwice) {
  const OwnedArray cell = cellOf({1, 2});
  EXPECT_EQ(feval("", 0, nullptr, {cell.get(), cell.get()}), 0);
  EXPECT_EQ(scalarsOf(params.rhs(0)), (std::vector<double>{1, 2}));
  EXPECT_EQ(scalarsOf(params.rhs(1)), (std::vector<double>{1, 2}));
  EXPECT_EQ(hcyGetScalar(elementOf(cell, 0).get()), 1.0);
}

TEST_F(FevalContainers, sendAnElementAsItIsWhenTheirTurnComes) {
  const OwnedArray cell(hcyCreateCellMatrix(1, 1));
  const OwnedArray element(hcyCreateNumericMatrix(1, 1, hcyINT16_CLASS, hcyREAL));
  auto& value = *static_cast<std::int16_t*>(hcyGetData(element.get()));
  const auto stored = [this](int which) { return params.rhs(which).cell().elements(0); };
  value = 1;
  hcySetCell(cell.get(), 0, element.get());
  value = 2;
  EXPECT_EQ(feval("", 0, nullptr, {cell.get(), element.get()}), 0);
  EXPECT_EQ(stored(0).int16().elements(0), 1);
  EXPECT_EQ(params.rhs(1).int16().elements(0), 2);
  value = 3;
  EXPECT_EQ(feval("", 0, nullptr, {element.get(), cell.get()}), 0);
  EXPECT_EQ(params.rhs(0).int16().elements(0), 3);
  EXPECT_EQ(stored(1).int16().elements(0), 3);
}

// Both entries are the same array, and its turn comes last behind the element's.
TEST_F(FevalContainers, sendAnElementAsItIsWhenTheirLastTurnComes) {
  const OwnedArray cell(hcyCreateCellMatrix(1, 1));
  const OwnedArray element(hcyCreateNumericMatrix(1, 1, hcyINT16_CLASS, hcyREAL));
  auto& value = *static_cast<std::int16_t*>(hcyGetData(element.get()));
  value = 1;
  hcySetCell(cell.get(), 0, element.get());
  value = 2;
  const OwnedArray second(hcyGetCell(cell.get(), 0));
  EXPECT_EQ(feval("", 0, nullptr, {cell.get(), element.get(), cell.get()}), 0);
  for (const int which : {0, 2}) {
    EXPECT_EQ(params.rhs(which).cell().elements(0).int16().elements(0), 2) << which;
  }
  // Of two handles over one element, the last one before counts.
  EXPECT_EQ(feval("", 0, nullptr, {element.get(), second.get(), cell.get()}), 0);
  EXPECT_EQ(params.rhs(0).int16().elements(0), 1);
  EXPECT_EQ(params.rhs(2).cell().elements(0).int16().elements(0), 1);
  EXPECT_EQ(static_cast<std::int16_t*>(hcyGetData(elementOf(cell, 0).get()))[0], 1);
}

TEST_F(FevalContainers, ofOtherContainersShowWhatIsInThemWhenTheirTurnComes) {
  const OwnedArray inner = cellOf({1});
  const OwnedArray outer(hcyCreateCellMatrix(1, 1));
  hcySetCell(outer.get(), 0, inner.get());
  hcyGetPr(elementOf(inner, 0).get())[0] = 5;
  EXPECT_EQ(feval("", 0, nullptr, {outer.get(), inner.get()}), 0);
  EXPECT_EQ(scalarsOf(params.rhs(0).cell().elements(0)), (std::vector<double>{1}));
  EXPECT_EQ(scalarsOf(params.rhs(1)), (std::vector<double>{5}));
  EXPECT_EQ(feval("", 0, nullptr, {inner.get(), outer.get()}), 0);
  EXPECT_EQ(scalarsOf(params.rhs(1).cell().elements(0)), (std::vector<double>{5}));
  // Only storing the array brings the change into the container for good.
  EXPECT_EQ(hcyGetScalar(elementOf(elementOf(outer, 0), 0).get()), 1.0);
}

}  // namespace
}  // namespace hcy::abi
