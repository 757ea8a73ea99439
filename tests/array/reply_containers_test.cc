// SPDX-License-Identifier: Apache-2.0
//
// Cell and struct arrays of a reply that hold other elements than their dimensions say.

#include <cstdint>
#include <functional>
#include <limits>

#include "support/ways_to_arrays.h"

namespace hcy {
namespace {

using test::cellOf;
using test::committed;
using test::Numbers;
using test::owned;
using test::scalarsOf;
using test::structOf;
using test::wrapped;

constexpr double missing = -1.0;

double cellAt(const ArrayHandle& array, std::size_t index) {
  const auto element = owned(hcyGetCell(array.get(), index));
  return element ? hcyGetScalar(element.get()) : missing;
}
double fieldAt(const ArrayHandle& array, std::size_t index, const char* name) {
  const auto element = owned(hcyGetField(array.get(), index, name));
  return element ? hcyGetScalar(element.get()) : missing;
}

TEST(CellReply, OfFewerElementsReadsNullForTheOthers) {
  const auto array = wrapped(cellOf({1, 4}, {5, 6}));
  EXPECT_EQ(cellAt(array, 1), 6.0);
  EXPECT_EQ(cellAt(array, 2), missing);
  EXPECT_EQ(cellAt(array, 3), missing);
  hcySetCell(array.get(), 2, owned(hcyCreateDoubleScalar(9.0)).get());
  EXPECT_EQ(cellAt(array, 2), missing);
  EXPECT_EQ(scalarsOf(committed(array).cell().elements()), (Numbers{5, 6}));
}

TEST(CellReply, OfFewerElementsGetsTheOthersByAResize) {
  const auto array = wrapped(cellOf({1, 4}, {5, 6}));
  hcySetN(array.get(), 4);
  EXPECT_EQ(cellAt(array, 3), 0.0);
  EXPECT_EQ(scalarsOf(committed(array).cell().elements()), (Numbers{5, 6, 0, 0}));
}

TEST(CellReply, OfMoreElementsReadsThoseOfItsDimensions) {
  const auto array = wrapped(cellOf({1, 2}, {5, 6, 7}));
  EXPECT_EQ(cellAt(array, 1), 6.0);
  EXPECT_EQ(cellAt(array, 2), missing);
  EXPECT_EQ(scalarsOf(committed(array).cell().elements()), (Numbers{5, 6, 7}));
}

TEST(CellReply, WithoutDimensionsRefusesEveryIndex) {
  const auto array = wrapped(cellOf({}, {5, 6}));
  EXPECT_EQ(cellAt(array, 0), missing);
  hcySetCell(array.get(), 0, owned(hcyCreateDoubleScalar(9.0)).get());
  EXPECT_EQ(scalarsOf(committed(array).cell().elements()), (Numbers{5, 6}));
}

TEST(CellReply, WithoutItsPartHasNoElements) {
  const auto array = wrapped(test::arrayOf(VORTEN_Array::CELL, {1, 2}));
  EXPECT_EQ(cellAt(array, 0), missing);
}

TEST(UnservedElement, ReadsAsNullAndIsKept) {
  for (const int type : test::unservedTypes) {
    auto message = cellOf({1, 2}, {5});
    *message.mutable_cell()->add_elements() = test::arrayOf(type, {1, 1});
    const auto array = wrapped(message);
    EXPECT_EQ(cellAt(array, 0), 5.0);
    EXPECT_EQ(cellAt(array, 1), missing) << type;
    EXPECT_EQ(committed(array).SerializeAsString(), message.SerializeAsString());
    const auto copy = owned(hcyDuplicateArray(array.get()));
    EXPECT_EQ(committed(copy).SerializeAsString(), message.SerializeAsString());
  }
}

TEST(UnservedElement, CanBeReplaced) {
  auto message = structOf({1, 1}, {"a"}, {});
  *message.mutable_struct_()->add_elements() = test::arrayOf(VORTEN_Array::STRING, {1, 1});
  const auto array = wrapped(message);
  EXPECT_EQ(fieldAt(array, 0, "a"), missing);
  hcySetField(array.get(), 0, "a", owned(hcyCreateDoubleScalar(9.0)).get());
  EXPECT_EQ(fieldAt(array, 0, "a"), 9.0);
}

// Element 0 is whole, element 1 lacks its second field, element 2 has none.
ArrayHandle shortStruct() { return wrapped(structOf({1, 3}, {"a", "b"}, {1, 2, 3})); }

TEST(StructReply, OfFewerSlotsReadsNullForTheOthers) {
  const auto array = shortStruct();
  EXPECT_EQ(fieldAt(array, 0, "b"), 2.0);
  EXPECT_EQ(fieldAt(array, 1, "a"), 3.0);
  EXPECT_EQ(fieldAt(array, 1, "b"), missing);
  EXPECT_EQ(fieldAt(array, 2, "a"), missing);
  hcySetField(array.get(), 1, "b", owned(hcyCreateDoubleScalar(9.0)).get());
  hcySetFieldByNumber(array.get(), 2, 0, owned(hcyCreateDoubleScalar(9.0)).get());
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2, 3}));
}

TEST(StructReply, OfFewerSlotsKeepsThemWhenAFieldIsAdded) {
  const auto array = shortStruct();
  EXPECT_EQ(hcyAddField(array.get(), "c"), 2);
  EXPECT_EQ(fieldAt(array, 0, "a"), 1.0);
  EXPECT_EQ(fieldAt(array, 0, "b"), 2.0);
  EXPECT_EQ(fieldAt(array, 0, "c"), 0.0);
  EXPECT_EQ(fieldAt(array, 1, "a"), 3.0);
  EXPECT_EQ(fieldAt(array, 1, "c"), 0.0);
  EXPECT_EQ(fieldAt(array, 2, "c"), missing);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2, 0, 3, 0, 0}));
}

TEST(StructReply, OfFewerSlotsKeepsThemWhenAFieldIsRemoved) {
  const auto first = shortStruct();
  hcyRemoveField(first.get(), 0);
  EXPECT_EQ(fieldAt(first, 0, "b"), 2.0);
  EXPECT_EQ(fieldAt(first, 1, "b"), missing);
  const auto second = shortStruct();
  hcyRemoveField(second.get(), 1);
  EXPECT_EQ(fieldAt(second, 0, "a"), 1.0);
  EXPECT_EQ(fieldAt(second, 1, "a"), 3.0);
  EXPECT_EQ(fieldAt(second, 2, "a"), missing);
  EXPECT_EQ(scalarsOf(committed(second).struct_().elements()), (Numbers{1, 3}));
}

TEST(StructReply, OfFewerSlotsGetsNoneBeyondThemByChangesOfFields) {
  const auto array = wrapped(structOf({2147483647, 1}, {"a"}, {1, 2}));
  hcyRemoveField(array.get(), 0);
  EXPECT_EQ(hcyAddField(array.get(), "b"), 0);
  EXPECT_EQ(fieldAt(array, 1, "b"), 0.0);
  EXPECT_EQ(fieldAt(array, 2, "b"), missing);
  EXPECT_EQ(committed(array).struct_().elements_size(), 2);
}

TEST(StructReply, OfFewerSlotsGetsTheOthersByAResize) {
  const auto array = shortStruct();
  hcySetN(array.get(), 3);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2, 3, 0, 0, 0}));
  EXPECT_EQ(fieldAt(array, 2, "b"), 0.0);
}

TEST(StructReply, OfMoreSlotsKeepsThem) {
  const auto array = wrapped(structOf({1, 1}, {"a"}, {1, 2}));
  EXPECT_EQ(fieldAt(array, 1, "a"), missing);
  EXPECT_EQ(hcyAddField(array.get(), "b"), 1);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 0, 2, 0}));
  hcyRemoveField(array.get(), 1);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2}));
}

TEST(StructReply, WithoutFieldsGetsOneForItsElements) {
  const auto array = wrapped(test::arrayOf(VORTEN_Array::STRUCT, {1, 3}));
  EXPECT_EQ(hcyGetNumberOfFields(array.get()), 0);
  EXPECT_EQ(hcyAddField(array.get(), "a"), 0);
  EXPECT_EQ(fieldAt(array, 2, "a"), 0.0);
  EXPECT_EQ(committed(array).struct_().elements_size(), 3);
}

TEST(StructReply, WithoutFieldNamesKeepsItsSlotsAsTheFieldThatItGets) {
  const auto array = wrapped(structOf({1, 3}, {}, {1, 2}));
  EXPECT_EQ(hcyAddField(array.get(), "a"), 0);
  EXPECT_EQ(fieldAt(array, 1, "a"), 2.0);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2, 0}));
}

TEST(StructReply, WithoutFieldNamesKeepsMoreSlotsThanItHasElements) {
  const auto array = wrapped(structOf({1, 1}, {}, {1, 2}));
  EXPECT_EQ(hcyAddField(array.get(), "a"), 0);
  EXPECT_EQ(hcyAddField(array.get(), "b"), 1);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 0, 2, 0}));
}

TEST(StructReply, WithoutFieldsGetsOneForAtMost65536Elements) {
  const auto array = wrapped(test::arrayOf(VORTEN_Array::STRUCT, {1, 65536}));
  EXPECT_EQ(hcyAddField(array.get(), "a"), 0);
  EXPECT_EQ(fieldAt(array, 65535, "a"), 0.0);
  for (const std::uint64_t columns : {std::uint64_t{65537}, std::uint64_t{2147483647}}) {
    const auto larger = wrapped(test::arrayOf(VORTEN_Array::STRUCT, {1, columns}));
    EXPECT_EQ(hcyAddField(larger.get(), "a"), -1);
    EXPECT_EQ(hcyGetNumberOfFields(larger.get()), 0);
    EXPECT_FALSE(committed(larger).struct_().field_names_size() > 0);
  }
}

TEST(StructReply, WithoutFieldsGetsOneForAtMost65536ElementsHoweverTheProgramComesToIt) {
  for (const auto& [name, way] : test::waysFromReplies()) {
    SCOPED_TRACE(name);
    const auto array = way(test::arrayOf(VORTEN_Array::STRUCT, {65536, 1}));
    EXPECT_EQ(hcyAddField(array.get(), "a"), 0);
    EXPECT_EQ(fieldAt(array, 65535, "a"), 0.0);
    const auto larger = way(test::arrayOf(VORTEN_Array::STRUCT, {65537, 1}));
    EXPECT_EQ(hcyAddField(larger.get(), "a"), -1);
    EXPECT_EQ(hcyGetNumberOfFields(larger.get()), 0);
    EXPECT_EQ(hcyGetNumberOfElements(larger.get()), 65537U);
    EXPECT_EQ(committed(larger).struct_().ByteSizeLong(), 0U);
  }
}

TEST(StructReply, WithoutFieldsGetsOneForAllElementsThatTheProgramHasAskedFor) {
  const auto array = wrapped(test::arrayOf(VORTEN_Array::STRUCT, {1, 70000}));
  hcySetN(array.get(), 70000);
  const auto copy = test::duplicateOf(array);
  for (const ArrayHandle& each : {std::cref(array), std::cref(copy)}) {
    EXPECT_EQ(hcyAddField(each.get(), "a"), 0);
    EXPECT_EQ(fieldAt(each, 69999, "a"), 0.0);
  }
}

TEST(StructReply, WithoutDimensionsRefusesEveryIndex) {
  const auto array = wrapped(structOf({}, {"a"}, {1}));
  EXPECT_EQ(fieldAt(array, 0, "a"), missing);
  EXPECT_EQ(owned(hcyGetFieldByNumber(array.get(), 0, 0)), nullptr);
  EXPECT_EQ(hcyAddField(array.get(), "b"), 1);
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 0}));
}

TEST(StructReply, OfHugeDimensionsHasNoElementWhereTheProductWraps) {
  constexpr std::uint64_t quarter = std::uint64_t{1} << 62;
  const auto array = wrapped(structOf({2 * quarter}, {"a", "b", "c", "d"}, {1, 2, 3, 4}));
  for (const std::size_t index : {std::size_t{1}, quarter - 1, quarter, quarter + 1}) {
    EXPECT_EQ(fieldAt(array, index, "a"), missing) << index;
    EXPECT_EQ(fieldAt(array, index, "d"), missing) << index;
    hcySetField(array.get(), index, "b", owned(hcyCreateDoubleScalar(9.0)).get());
  }
  EXPECT_EQ(scalarsOf(committed(array).struct_().elements()), (Numbers{1, 2, 3, 4}));
}

}  // namespace
}  // namespace hcy
