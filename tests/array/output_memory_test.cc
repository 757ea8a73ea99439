// SPDX-License-Identifier: Apache-2.0

#include "array/output_memory.h"

#include <gtest/gtest.h>

#include <string>

#include "support/mapped_memory.h"
#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::owned;

// An output as a call returns it, which tells when its memory is released.
struct Output {
  explicit Output(const VORTEN_Array& array) {
    auto message = OutputMemory::createMessage();
    message->CopyFrom(array);
    message->GetArena()->OwnCustomDestructor(new std::shared_ptr<bool>(isReleased), [](void* flag) {
      const std::unique_ptr<std::shared_ptr<bool>> owned(static_cast<std::shared_ptr<bool>*>(flag));
      **owned = true;
    });
    handle = ArrayProxyBuilder::over(std::move(message));
  }
  hcyArray* get() const { return handle.get(); }
  std::uint64_t used() const { return messageOf(handle.get()).GetArena()->SpaceUsed(); }

  std::shared_ptr<bool> isReleased = std::make_shared<bool>(false);
  ArrayHandle handle;
};

VORTEN_Array cellInACell() {
  VORTEN_Array array = test::arrayOf(VORTEN_Array::CELL, {1, 1});
  *array.mutable_cell()->add_elements() = test::cellOf({1, 2}, {7, 8});
  return array;
}

TEST(OutputMemory, KnowsTheMessagesThatLieInIt) {
  const auto message = OutputMemory::createMessage();
  EXPECT_NE(OutputMemory::of(message), nullptr);
  EXPECT_EQ(OutputMemory::of(message), OutputMemory::of(std::shared_ptr<VORTEN_Array>(message)));
  EXPECT_NE(OutputMemory::of(message), OutputMemory::of(OutputMemory::createMessage()));
  EXPECT_EQ(OutputMemory::of(std::make_shared<VORTEN_Array>()), nullptr);
}

TEST(OutputMemory, IsReleasedWithItsOutput) {
  Output output(test::rowOf<DOUBLE_class>({1, 2}));
  EXPECT_FALSE(*output.isReleased);
  output.handle.reset();
  EXPECT_TRUE(*output.isReleased);
}

TEST(OutputMemory, IsReleasedWithTheLastElementThatOutlivesItsContainer) {
  Output output(test::cellOf({1, 2}, {7, 8}));
  auto first = owned(hcyGetCell(output.get(), 0));
  auto second = owned(hcyGetCell(output.get(), 1));
  output.handle.reset();
  first.reset();
  EXPECT_EQ(hcyGetScalar(second.get()), 8.0);
  EXPECT_FALSE(*output.isReleased);
  second.reset();
  EXPECT_TRUE(*output.isReleased);
}

TEST(OutputMemory, IsKeptByAnotherContainerThatHoldsAnElement) {
  const auto holder = owned(hcyCreateCellMatrix(1, 1));
  std::shared_ptr<bool> isReleased;
  {
    const Output output(test::cellOf({1, 1}, {7}));
    isReleased = output.isReleased;
    hcySetCell(holder.get(), 0, owned(hcyGetCell(output.get(), 0)).get());
  }
  EXPECT_EQ(hcyGetScalar(owned(hcyGetCell(holder.get(), 0)).get()), 7.0);
  EXPECT_FALSE(*isReleased);
  hcySetCell(holder.get(), 0, owned(hcyCreateDoubleScalar(1)).get());
  EXPECT_TRUE(*isReleased);
}

TEST(OutputMemory, IsNotNeededByACopy) {
  Output output(cellInACell());
  const auto copy = owned(hcyDuplicateArray(output.get()));
  const auto element = owned(hcyDuplicateArray(owned(hcyGetCell(output.get(), 0)).get()));
  output.handle.reset();
  EXPECT_TRUE(*output.isReleased);
  EXPECT_EQ(hcyGetScalar(owned(hcyGetCell(element.get(), 1)).get()), 8.0);
  EXPECT_EQ(messageOf(copy.get()).GetArena(), nullptr);
}

TEST(OutputMemory, HoldsBlocksOfEverySize) {
  for (const std::uint64_t bytes : {1ULL, 100ULL, 1000ULL, 100000ULL, 3000000ULL, 40000000ULL}) {
    VORTEN_Array array = test::arrayOf(VORTEN_Array::DOUBLE, {bytes / 8 + 1, 1});
    array.mutable_qxdouble()->mutable_elements()->Resize(static_cast<int>(bytes / 8 + 1), 1.5);
    const Output output(array);
    double* const data = hcyGetPr(output.get());
    for (std::uint64_t i = 0; i <= bytes / 8; ++i) ASSERT_EQ(data[i], 1.5);
  }
}

TEST(OutputMemory, HoldsASmallArrayInItsFirstBlock) {
  const Output output(test::rowOf<DOUBLE_class>({1, 2, 3}));
  EXPECT_LE(messageOf(output.get()).GetArena()->SpaceAllocated(), sizeof(OutputMemory));
}

TEST(OutputMemory, GivesLargeBlocksBack) {
  constexpr std::size_t bytes = std::size_t{64} << 20;
  const std::size_t before = test::mappedBytes();
  for (int i = 0; i < 8; ++i) {
    const auto message = OutputMemory::createMessage();
    message->set_type(VORTEN_Array::DOUBLE);
    message->mutable_qxdouble()->mutable_elements()->Reserve(bytes / sizeof(double));
  }
  EXPECT_LT(test::mappedBytes(), before + 4 * bytes);
}

TEST(OutputMemory, HasNoDimensionsToPointTo) {
  const Output output(test::arrayOf(VORTEN_Array::DOUBLE, {}));
  EXPECT_EQ(hcyGetNumberOfDimensions(output.get()), 0U);
  EXPECT_EQ(hcyGetDimensions(output.get()), nullptr);
}

TEST(OutputMemory, NoLongerListsTheElementsOfAContainerThatTookThemOver) {
  const Output output(test::cellOf({1, 2}, {7, 8}));
  EXPECT_TRUE(messageOf(output.get()).cell().elements().empty());
  EXPECT_EQ(hcyGetScalar(owned(hcyGetCell(output.get(), 1)).get()), 8.0);
}

// Memory that takes nothing back must not be what a loop takes from.
template <class Change>
void expectNoGrowth(const Output& output, Change change) {
  change(0);
  change(1);
  const std::uint64_t used = output.used();
  for (int i = 2; i < 100; ++i) change(i);
  EXPECT_EQ(output.used(), used);
}

TEST(OutputMemory, DoesNotGrowWhileItsContainersAreSent) {
  const Output output(cellInACell());
  const auto inner = owned(hcyGetCell(output.get(), 0));
  expectNoGrowth(output, [&](int i) {
    *static_cast<int*>(hcyGetData(owned(hcyGetCell(inner.get(), 0)).get())) = i;
    for (const hcyArray* array : {inner.get(), output.handle.get()}) {
      proxyOf(array).beginReading();
      proxyOf(array).endReading();
    }
  });
}

TEST(OutputMemory, DoesNotGrowWhileItsContainersAreCopied) {
  const Output output(cellInACell());
  const auto inner = owned(hcyGetCell(output.get(), 0));
  expectNoGrowth(output, [&](int) {
    owned(hcyDuplicateArray(inner.get()));
    owned(hcyDuplicateArray(output.get()));
  });
}

TEST(OutputMemory, DoesNotGrowWhileElementsAreStored) {
  const Output output(cellInACell());
  const auto inner = owned(hcyGetCell(output.get(), 0));
  expectNoGrowth(output, [&](int i) {
    hcySetCell(inner.get(), 1, owned(hcyCreateDoubleScalar(i)).get());
    hcySetCell(output.get(), 0, inner.get());
  });
}

TEST(OutputMemory, DoesNotGrowWhileFieldsComeAndGo) {
  const Output output(test::structOf({1, 1}, {"a"}, {1}));
  expectNoGrowth(output, [&](int) {
    EXPECT_EQ(hcyAddField(output.get(), "a field with a name that takes memory of its own"), 1);
    hcyRemoveField(output.get(), 1);
  });
}

TEST(OutputMemory, DoesNotGrowWhileShapesChange) {
  const std::size_t shapes[][2] = {{3, 4}, {1, 1}};
  for (const auto& array :
       {test::rowOf<DOUBLE_class>({1}), test::rowOf<CHAR_class>({1}), test::rowOf<UINT8_class>({1}),
        test::rowOf<INT16_class>({1}), cellInACell()}) {
    const Output output(array);
    expectNoGrowth(output, [&](int i) { hcySetDimensions(output.get(), shapes[i % 2], 2); });
  }
}

}  // namespace
}  // namespace hcy
