// SPDX-License-Identifier: Apache-2.0
//
// Adding fields to a struct array and removing them.

#include <climits>
#include <string>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

using Names = std::vector<std::string>;

Names namesOf(const hcyArray* array) {
  Names names;
  for (int n = 0; n < hcyGetNumberOfFields(array); ++n) {
    names.emplace_back(hcyGetFieldNameByNumber(array, n));
  }
  return names;
}

Array structOf(const Names& names, std::size_t m, std::size_t n) {
  std::vector<const char*> texts;
  for (const std::string& name : names) texts.push_back(name.c_str());
  return hcyCreateStructMatrix(m, n, static_cast<int>(texts.size()), texts.data());
}

// Sets every field to the text made of its name and the number of its element.
void label(hcyArray* array) {
  for (std::size_t i = 0; i < hcyGetNumberOfElements(array); ++i) {
    for (const std::string& name : namesOf(array)) {
      const std::string text = name + std::to_string(i);
      hcySetField(array, i, name.c_str(), Array(hcyCreateString(text.c_str())));
    }
  }
}

void expectLabelled(const hcyArray* array, std::size_t index, const std::string& name) {
  const Array element = hcyGetField(array, index, name.c_str());
  const Text text(hcyArrayToString(element));
  ASSERT_NE(text, nullptr) << name << index;
  EXPECT_EQ(text.get(), name + std::to_string(index));
}

void expectNeverSet(const hcyArray* array, std::size_t index, const char* name) {
  const Array element = hcyGetField(array, index, name);
  ASSERT_TRUE(element) << name << index;
  EXPECT_EQ(hcyGetClassID(element), hcyDOUBLE_CLASS);
  EXPECT_EQ(shapeOf(element), (Shape{0, 0}));
}

TEST(AddedField, StandsBehindTheOthersAndIsNeverSet) {
  const Array array = structOf({"a", "b"}, 3, 1);
  label(array);
  EXPECT_EQ(hcyAddField(array, "c"), 2);
  EXPECT_EQ(namesOf(array), (Names{"a", "b", "c"}));
  for (std::size_t i = 0; i < 3; ++i) {
    expectLabelled(array, i, "a");
    expectLabelled(array, i, "b");
    expectNeverSet(array, i, "c");
  }
}

TEST(AddedField, CanBeSetInEveryElement) {
  const Array array = structOf({"a"}, 2, 2);
  EXPECT_EQ(hcyAddField(array, "b"), 1);
  EXPECT_EQ(hcyAddField(array, "c"), 2);
  label(array);
  for (std::size_t i = 0; i < 4; ++i) {
    for (const char* const name : {"a", "b", "c"}) expectLabelled(array, i, name);
  }
}

TEST(AddedField, ThatExistsIsTheOneThereIs) {
  const Array array = structOf({"a", "x"}, 1, 2);
  label(array);
  EXPECT_EQ(hcyAddField(array, "a"), 0);
  EXPECT_EQ(hcyAddField(array, "x"), 1);
  EXPECT_EQ(namesOf(array), (Names{"a", "x"}));
  for (std::size_t i = 0; i < 2; ++i) expectLabelled(array, i, "x");
}

TEST(AddedField, NeedsAName) {
  const Array array = structOf({"a"}, 1, 1);
  EXPECT_EQ(hcyAddField(array, nullptr), -1);
  EXPECT_EQ(hcyAddField(array, ""), 1);
  EXPECT_EQ(namesOf(array), (Names{"a", ""}));
}

TEST(AddedField, IsTheFirstOfAStructWithoutFields) {
  const Array array = structOf({}, 2, 3);
  EXPECT_EQ(hcyAddField(array, "a"), 0);
  for (std::size_t i = 0; i < 6; ++i) expectNeverSet(array, i, "a");
  label(array);
  for (std::size_t i = 0; i < 6; ++i) expectLabelled(array, i, "a");
}

TEST(AddedField, ReachesTheElementsThatAStructWithoutFieldsGrewTo) {
  const Array array = structOf({}, 2, 1);
  hcySetM(array, 4);
  const Array copy = hcyDuplicateArray(array);
  for (hcyArray* const each : {static_cast<hcyArray*>(array), static_cast<hcyArray*>(copy)}) {
    EXPECT_EQ(hcyAddField(each, "a"), 0);
    label(each);
    expectLabelled(each, 3, "a");
  }
}

TEST(AddedField, ReachesEveryElementOfALargeStructAndOfItsCopy) {
  const Array array = structOf({}, 100'000, 1);
  const Array copy = hcyDuplicateArray(array);
  for (hcyArray* const each : {static_cast<hcyArray*>(array), static_cast<hcyArray*>(copy)}) {
    EXPECT_EQ(hcyAddField(each, "a"), 0);
    expectNeverSet(each, 99'999, "a");
  }
}

TEST(AddedField, OfAStructWithoutElementsIsAName) {
  const Array array = structOf({"a"}, 0, 2);
  EXPECT_EQ(hcyAddField(array, "b"), 1);
  EXPECT_EQ(namesOf(array), (Names{"a", "b"}));
  EXPECT_FALSE(Array(hcyGetField(array, 0, "b")));
  hcySetM(array, 1);
  label(array);
  expectLabelled(array, 1, "a");
  expectLabelled(array, 1, "b");
}

TEST(AddedField, IsNotInACopyMadeBefore) {
  const Array array = structOf({"a"}, 1, 1);
  const Array copy = hcyDuplicateArray(array);
  hcyAddField(array, "b");
  EXPECT_EQ(namesOf(copy), Names{"a"});
}

TEST(RemovedField, LeavesTheOthersInOrder) {
  for (int removed = 0; removed < 3; ++removed) {
    const Array array = structOf({"a", "b", "c"}, 2, 2);
    label(array);
    hcyRemoveField(array, removed);
    Names left = {"a", "b", "c"};
    left.erase(left.begin() + removed);
    EXPECT_EQ(namesOf(array), left);
    for (std::size_t i = 0; i < 4; ++i) {
      for (const std::string& name : left) expectLabelled(array, i, name);
    }
  }
}

TEST(RemovedField, MustExist) {
  const Array array = structOf({"a", "b"}, 1, 2);
  label(array);
  for (const int n : {-1, 2, INT_MIN, INT_MAX}) hcyRemoveField(array, n);
  EXPECT_EQ(namesOf(array), (Names{"a", "b"}));
  for (std::size_t i = 0; i < 2; ++i) expectLabelled(array, i, "b");
}

TEST(RemovedField, OfAStructWithoutElementsIsAName) {
  const Array array = structOf({"a", "b"}, 3, 0);
  hcyRemoveField(array, 0);
  EXPECT_EQ(namesOf(array), Names{"b"});
}

TEST(RemovedField, MayBeTheLastAndComeBackNeverSet) {
  const Array array = structOf({"a"}, 2, 2);
  label(array);
  hcyRemoveField(array, 0);
  EXPECT_EQ(namesOf(array), Names{});
  EXPECT_EQ(hcyGetNumberOfElements(array), 4U);
  EXPECT_EQ(hcyAddField(array, "a"), 0);
  for (std::size_t i = 0; i < 4; ++i) expectNeverSet(array, i, "a");
}

TEST(RemovedField, LeavesItsElementToTheHandlesOverIt) {
  const Array array = structOf({"a"}, 1, 1);
  label(array);
  const Array element = hcyGetField(array, 0, "a");
  hcyRemoveField(array, 0);
  EXPECT_EQ(*hcyGetChars(element), 'a');
}

TEST(RemovedField, IsGoneFromACopyMadeAfter) {
  const Array array = structOf({"a", "b"}, 2, 1);
  label(array);
  hcyRemoveField(array, 0);
  const Array copy = hcyDuplicateArray(array);
  EXPECT_EQ(namesOf(copy), Names{"b"});
  expectLabelled(copy, 1, "b");
}

TEST(ChangedFields, KeepTheirElementsWhenTheShapeChanges) {
  const Array array = structOf({"a", "b"}, 2, 1);
  label(array);
  hcyAddField(array, "c");
  hcySetM(array, 3);
  hcyRemoveField(array, 0);
  EXPECT_EQ(namesOf(array), (Names{"b", "c"}));
  expectLabelled(array, 0, "b");
  expectLabelled(array, 1, "b");
  expectNeverSet(array, 2, "b");
  for (std::size_t i = 0; i < 3; ++i) expectNeverSet(array, i, "c");
}

}  // namespace
}  // namespace hcy::abi
