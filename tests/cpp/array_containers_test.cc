// SPDX-License-Identifier: Apache-2.0
//
// Elements of cells and fields of structs, by index and by name.

#include <gtest/gtest.h>

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {
namespace {

// A place that has been given a name would not keep its container alive.
template <class Place, class = void>
struct IsOfUse : std::false_type {};
template <class Place>
struct IsOfUse<Place, std::void_t<decltype(std::declval<Place>().scalar())>> : std::true_type {};
static_assert(IsOfUse<Slot>::value && !IsOfUse<Slot&>::value);
static_assert(std::is_convertible_v<Slot, Array> && !std::is_convertible_v<Slot&, Array>);
static_assert(!std::is_move_constructible_v<Slot>);

TEST(CppArrayCell, isReadAndWrittenByIndex) {
  Array cell = Array::cells({2, 2});
  EXPECT_TRUE(cell.isCell());
  cell[0] = 2.5;
  cell[1] = "text";
  cell[2] = {1.0, 2.0, 3.0};
  cell[3] = cell[1];
  EXPECT_EQ(cell[0].scalar(), 2.5);
  EXPECT_EQ(cell[3].toString(), "text");
  EXPECT_EQ(cell[2].toVector<double>(), (std::vector<double>{1, 2, 3}));
  const Array element = cell[2];
  EXPECT_EQ(element.shape(), (Shape{3, 1}));
  const Array& seen = cell;
  EXPECT_EQ(seen[1].toString(), "text");
}

TEST(CppArrayCell, takesItsElementsFromAList) {
  const Array array = Array({1.0, 2.0}, {1, 2});
  const Array cell = Array::cellOf({array, "text", true, {1, 2, 3}, Array::cells({0, 0})});
  EXPECT_EQ(cell.shape(), (Shape{5, 1}));
  EXPECT_EQ(cell[0].shape(), (Shape{1, 2}));
  EXPECT_EQ(cell[2].className(), "logical");
  EXPECT_EQ(cell[3].toVector<std::int32_t>(), (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_TRUE(cell[4].isCell());
  EXPECT_TRUE(Array::cellOf({}).isEmpty());
}

TEST(CppArrayCell, sharesItsElements) {
  Array number = 1.0;
  Array cell = Array::cellOf({number});
  number.span<double>()[0] = 5;
  EXPECT_EQ(cell[0].scalar(), 5);
  Array element = cell[0];
  cell = Array();
  EXPECT_EQ(element.scalar(), 5);
}

TEST(CppArrayCell, hasNothingOutside) {
  Array cell = Array::cells({2, 1});
  EXPECT_THROW(cell.scalar(), UsageError);
  EXPECT_THROW((cell[2] = 1.0), UsageError);
  EXPECT_THROW(cell[2].get(), UsageError);
  EXPECT_THROW(static_cast<const Array&>(cell)[2], UsageError);
  EXPECT_EQ(cell[1].get().shape(), (Shape{0, 0}));
  Array number = 1.0;
  EXPECT_THROW(number[0].get(), UsageError);
  EXPECT_THROW((number[0] = 2.0), UsageError);
  EXPECT_THROW((cell("name") = 2.0), UsageError);
  EXPECT_THROW((cell[0] = Array()), UsageError);
}

TEST(CppArrayStruct, isReadAndWrittenByName) {
  Array people = Array::structs({1, 2}, {"name", "born"});
  EXPECT_TRUE(people.isStruct());
  EXPECT_EQ(people.fieldNames(), (std::vector<std::string>{"name", "born"}));
  people("name") = "Ada";
  people("born") = 1815.0;
  people(1, "name") = "Grace";
  people(1, "born") = people(0, "born");
  EXPECT_EQ(people("name").toString(), "Ada");
  EXPECT_EQ(people(0, "name").toString(), "Ada");
  EXPECT_EQ(people(1, "name").toString(), "Grace");
  EXPECT_EQ(people(1, "born").scalar(), 1815);
  const Array& seen = people;
  EXPECT_EQ(seen("name").toString(), "Ada");
  EXPECT_EQ(seen(1, "name").toString(), "Grace");
}

TEST(CppArrayStruct, takesItsFieldsFromAList) {
  const Array array{1.0};
  const Array s = Array::structOf({{"name", "Ada"}, {"list", {1.0, 2.0}}, {"array", array}});
  EXPECT_EQ(s.shape(), (Shape{1, 1}));
  EXPECT_EQ(s.fieldNames(), (std::vector<std::string>{"name", "list", "array"}));
  EXPECT_EQ(s("list").toVector<double>(), (std::vector<double>{1, 2}));
  EXPECT_EQ(s("array").scalar(), 1);
}

TEST(CppArrayStruct, hasEachFieldOnce) {
  EXPECT_THROW(Array::structOf({{"a", 1.0}, {"b", 2.0}, {"a", 3.0}}), UsageError);
  EXPECT_THROW(Array::structOf({{"", 1.0}, {"", 2.0}}), UsageError);
  EXPECT_EQ(Array::structOf({{"a", 1.0}, {"A", 2.0}})("A").scalar(), 2);
}

TEST(CppArrayStruct, hasNothingOutside) {
  Array s = Array::structs({1, 1}, {"a"});
  EXPECT_THROW(s.scalar(), UsageError);
  EXPECT_THROW((s("b") = 1.0), UsageError);
  EXPECT_THROW(s("b").get(), UsageError);
  EXPECT_THROW((s(1, "a") = 1.0), UsageError);
  EXPECT_THROW(s(1, "a").get(), UsageError);
  EXPECT_THROW(s[0].get(), UsageError);
  EXPECT_THROW(s(std::string("a\0", 2)).get(), UsageError);
  EXPECT_EQ(s("a").get().shape(), (Shape{0, 0}));
}

TEST(CppArrayStruct, gainsAndLosesFields) {
  Array s = Array::structOf({{"a", 1.0}});
  s.addField("b");
  s.addField("a");
  EXPECT_EQ(s.fieldNames(), (std::vector<std::string>{"a", "b"}));
  s("b") = 2.0;
  s.removeField("a");
  EXPECT_FALSE(s.hasField("a"));
  EXPECT_TRUE(s.hasField("b"));
  EXPECT_EQ(s("b").scalar(), 2);
  EXPECT_THROW(s.removeField("a"), UsageError);
  Array number = 1.0;
  EXPECT_THROW(number.addField("a"), UsageError);
  EXPECT_TRUE(number.fieldNames().empty());
}

TEST(CppArrayContainers, areWrittenThroughEachOther) {
  Array s = Array::structOf({{"list", Array::cells({3, 1})}});
  s("list")[1] = Array::structs({1, 2}, {"x"});
  s("list")[1](1, "x") = Array::cells({2, 2});
  s("list")[1](1, "x")[3] = "deep";
  s("list")[2] = std::int16_t{7};
  EXPECT_EQ(s("list")[1](1, "x")[3].toString(), "deep");
  EXPECT_EQ(s("list")[2].toVector<std::int16_t>(), std::vector<std::int16_t>{7});
  EXPECT_EQ(s("list")[1]("x").get().shape(), (Shape{0, 0}));
  EXPECT_EQ(s("list").get().shape(), (Shape{3, 1}));
  EXPECT_THROW((s("list")[3] = 1.0), UsageError);
  EXPECT_THROW((s("list")[1](1, "y") = 1.0), UsageError);
  EXPECT_EQ(Array(s.copy())("list")[1](1, "x")[3].toString(), "deep");
}

TEST(CppArrayContainers, mayHoldASnapshotOfThemselves) {
  Array cell = Array::cellOf({1.0, 2.0});
  cell[1] = cell;
  EXPECT_EQ(cell[1][1].scalar(), 2);
}

}  // namespace
}  // namespace hcyclient
