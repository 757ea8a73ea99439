// SPDX-License-Identifier: Apache-2.0
//
// The memory of many elements that are taken out of one container.

#include "array/content_blocks.h"

#include <algorithm>
#include <vector>

#include "support/mapped_memory.h"
#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::owned;

ArrayHandle cellOfScalars(int count) {
  VORTEN_Array cell = test::arrayOf(VORTEN_Array::CELL, {static_cast<std::uint64_t>(count), 1});
  for (int i = 0; i < count; ++i) {
    *cell.mutable_cell()->add_elements() = test::rowOf<DOUBLE_class>({i});
  }
  return test::wrapped(cell);
}

TEST(ContentBlocks, MakeContentsThatAreApart) {
  ContentBlocks blocks;
  std::vector<ContentPtr> contents;
  for (int i = 0; i < 2000; ++i) contents.push_back(blocks.make());
  std::ranges::sort(contents, {}, [](const ContentPtr& content) { return content.get(); });
  for (std::size_t i = 1; i < contents.size(); ++i) {
    const auto* const one = reinterpret_cast<const char*>(contents[i - 1].get());
    EXPECT_GE(reinterpret_cast<const char*>(contents[i].get()) - one,
              static_cast<std::ptrdiff_t>(sizeof(ArrayContent)));
  }
}

TEST(ContentBlocks, AreNoneForFewContents) {
  ContentBlocks blocks;
  std::vector<ContentPtr> contents;
  for (int i = 0; i < 300; ++i) contents.push_back(blocks.make());
  // Those of a block lie side by side.
  const auto distance = [&](std::size_t i) {
    return reinterpret_cast<const char*>(contents[i + 1].get()) -
           reinterpret_cast<const char*>(contents[i].get());
  };
  for (std::size_t i = 0; i < 255; ++i) {
    EXPECT_NE(distance(i), static_cast<std::ptrdiff_t>(sizeof(ArrayContent)));
  }
  for (std::size_t i = 256; i < 299; ++i) {
    EXPECT_EQ(distance(i), static_cast<std::ptrdiff_t>(sizeof(ArrayContent)));
  }
}

TEST(ContentBlocks, LiveAsLongAsWhatLiesInThem) {
  const std::size_t before = test::mappedBytes();
  std::vector<ArrayHandle> kept;
  {
    const ArrayHandle cell = cellOfScalars(40'000);
    for (std::size_t i = 0; i < 40'000; ++i) {
      ArrayHandle element = owned(hcyGetCell(cell.get(), i));
      if (i % 1000 == 999) kept.push_back(std::move(element));
    }
  }
  for (std::size_t i = 0; i < kept.size(); ++i) {
    EXPECT_EQ(hcyGetScalar(kept[i].get()), static_cast<double>(1000 * i + 999));
    hcySetN(kept[i].get(), 100);
    EXPECT_EQ(hcyGetPr(kept[i].get())[99], 0.0);
  }
  const std::size_t during = test::mappedBytes();
  kept.clear();
  // At least the last block is a mapping of its own.
  EXPECT_LE(test::mappedBytes(), during - (std::size_t{2} << 20));
  EXPECT_GE(during, before);
}

TEST(ContentBlocks, FollowTheirContainerWhenItsSlotsAreRegrouped) {
  VORTEN_Array message = test::arrayOf(VORTEN_Array::STRUCT, {1000, 1});
  message.mutable_struct_()->add_field_names("a");
  for (int i = 0; i < 1000; ++i) {
    *message.mutable_struct_()->add_elements() = test::rowOf<DOUBLE_class>({i});
  }
  const ArrayHandle array = test::wrapped(message);
  ASSERT_EQ(hcyAddField(array.get(), "b"), 1);
  for (std::size_t i = 0; i < 1000; ++i) {
    EXPECT_EQ(hcyGetScalar(owned(hcyGetField(array.get(), i, "a")).get()), static_cast<double>(i));
  }
  hcyRemoveField(array.get(), 0);
  EXPECT_TRUE(test::isEmptyDouble(test::sent(array).struct_().elements(999)));
}

}  // namespace
}  // namespace hcy
