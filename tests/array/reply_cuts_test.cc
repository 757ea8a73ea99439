// SPDX-License-Identifier: Apache-2.0
//
// Arrays of a reply that ends somewhere: whatever is handed out is what the whole reply has at the
// same place.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/wrapped_arrays.h"

namespace hcy {
namespace {

using test::arrayOf;

// Elements of which some take several bytes each.
template <class Class>
VORTEN_Array numbersOf() {
  VORTEN_Array array = arrayOf(Class::type, {2, 3});
  auto& part = Class::write(array);
  test::assign(part.mutable_elements(), {1, 300, -2, 4, 70000, 6});
  if constexpr (NumericClass<Class>) {
    test::assign(part.mutable_imag_elements(), {300, -7, 8, 0, 9, 500});
  }
  return array;
}

VORTEN_Array logicals() {
  VORTEN_Array array = arrayOf(VORTEN_Array::LOGICAL, {1, 1});
  array.mutable_logical()->add_elements(true);
  return array;
}

VORTEN_Array text() {
  VORTEN_Array array = arrayOf(VORTEN_Array::CHAR, {1, 6});
  test::assign(array.mutable_qxchar()->mutable_elements(),
               {'a', 0x20AC, 0xD83D, 0xDE00, 0xE9, 'b'});
  return array;
}

VORTEN_Array sparse(int type) {
  VORTEN_Array array = test::sparseOf(type, {300, 4}, {0, 299, 130, 5}, {0, 2, 2, 3, 4});
  if (type == VORTEN_Array::Sparse::DOUBLE) {
    VORTEN_Array::Double& values = *array.mutable_sparse()->mutable_qxsparsedouble();
    test::assign(values.mutable_elements(), {1, 2, 3, 4});
    test::assign(values.mutable_imag_elements(), {5, 6, 7, 8});
  } else {
    test::assign(array.mutable_sparse()->mutable_logical()->mutable_elements(), {1, 0, 1, 1});
  }
  return array;
}

VORTEN_Array cellOf(const std::vector<VORTEN_Array>& elements) {
  VORTEN_Array array = arrayOf(VORTEN_Array::CELL, {1, elements.size()});
  for (const VORTEN_Array& element : elements) *array.mutable_cell()->add_elements() = element;
  return array;
}

// One element after the other, with all of its fields.
VORTEN_Array structOf(const std::vector<std::string>& names,
                      const std::vector<VORTEN_Array>& elements) {
  VORTEN_Array array = arrayOf(VORTEN_Array::STRUCT, {elements.size() / names.size(), 1});
  for (const std::string& name : names) array.mutable_struct_()->add_field_names(name);
  for (const VORTEN_Array& element : elements) *array.mutable_struct_()->add_elements() = element;
  return array;
}

template <class... Classes>
std::vector<VORTEN_Array> numbersOfAll(testing::Types<Classes...>) {
  return {numbersOf<Classes>()...};
}

std::vector<VORTEN_Array> replies() {
  std::vector<VORTEN_Array> arrays = numbersOfAll(test::NumericClasses());
  arrays.insert(arrays.end(), {logicals(), text(), sparse(0), sparse(1)});
  const VORTEN_Array structure =
      structOf({"first", "second", "\xC3\xA9"},
               {text(), arrays[3], sparse(0), logicals(), cellOf({text(), arrays[9]}), arrays[2]});
  const VORTEN_Array everything = cellOf(arrays);
  arrays.insert(arrays.end(), {structure, everything, cellOf({structure, everything, structure}),
                               structOf({"a"}, {cellOf({structure}), structure})});
  return arrays;
}

ArrayHandle received(std::string_view bytes) {
  // Without a byte behind it, so that a sanitizer sees what reads on.
  const std::vector<std::uint8_t> own(bytes.begin(), bytes.end());
  ReceivedArray array;
  readReceived(array, own);
  return ArrayProxyBuilder::over(std::move(array));
}

// The first bytes of what a getter gives, if it gives anything.
void expectBytes(const void* part, const void* whole, std::size_t size) {
  if (part == nullptr) return;
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(std::memcmp(part, whole, size), 0);
}

void expectText(const hcyArray* part, const hcyArray* whole) {
  using Text = std::unique_ptr<char, void (*)(void*)>;
  const Text utf8(hcyArrayToString(part), hcyFree);
  const Text wholeUtf8(hcyArrayToString(whole), hcyFree);
  if (utf8) {
    EXPECT_TRUE(std::string_view(wholeUtf8.get()).starts_with(utf8.get()));
  }
  char bytes[16] = "";
  char wholeBytes[16] = "";
  hcyGetString(part, bytes, sizeof bytes);
  hcyGetString(whole, wholeBytes, sizeof wholeBytes);
  for (std::size_t i = 0; i < sizeof bytes; ++i) {
    EXPECT_TRUE(bytes[i] == wholeBytes[i] || bytes[i] == '\0') << i;
  }
}

void expectElements(const hcyArray* part, const hcyArray* whole) {
  const std::size_t count = hcyIsSparse(part) ? hcyGetNzmax(part) : hcyGetNumberOfElements(part);
  if (hcyIsSparse(part)) {
    ASSERT_LE(count, hcyGetNzmax(whole));
    expectBytes(hcyGetIr(part), hcyGetIr(whole), count * sizeof(std::size_t));
    expectBytes(hcyGetJc(part), hcyGetJc(whole), (hcyGetN(part) + 1) * sizeof(std::size_t));
  }
  const std::size_t size = count * hcyGetElementSize(part);
  expectBytes(hcyGetData(part), hcyGetData(whole), size);
  expectBytes(hcyGetImagData(part), hcyGetImagData(whole), size);
  expectBytes(hcyGetLogicals(part), hcyGetLogicals(whole), size);
  expectBytes(hcyGetChars(part), hcyGetChars(whole), size);
  EXPECT_TRUE(hcyGetScalar(part) == 0.0 || hcyGetScalar(part) == hcyGetScalar(whole));
  EXPECT_TRUE(hcyIsLogicalScalarTrue(whole) || !hcyIsLogicalScalarTrue(part));
}

void expectPart(const hcyArray* part, const hcyArray* whole);

void expectFields(const hcyArray* part, const hcyArray* whole) {
  ASSERT_LE(hcyGetNumberOfFields(part), hcyGetNumberOfFields(whole));
  for (int field = 0; field < hcyGetNumberOfFields(part); ++field) {
    EXPECT_STREQ(hcyGetFieldNameByNumber(part, field), hcyGetFieldNameByNumber(whole, field));
    for (std::size_t i = 0; i < hcyGetNumberOfElements(part); ++i) {
      const auto element = test::owned(hcyGetFieldByNumber(part, i, field));
      if (!element) continue;
      expectPart(element.get(), test::owned(hcyGetFieldByNumber(whole, i, field)).get());
      // A nested array whose bytes are cut is not there at all.
      EXPECT_EQ(hcyGetNumberOfDimensions(element.get()), 2U);
    }
  }
}

void expectPart(const hcyArray* part, const hcyArray* whole) {
  const std::size_t dimensions = hcyGetNumberOfDimensions(part);
  ASSERT_LE(dimensions, hcyGetNumberOfDimensions(whole));
  expectBytes(hcyGetDimensions(part), hcyGetDimensions(whole), dimensions * sizeof(std::size_t));
  // A reply that ends before its class is one of uint8, of which there are no elements.
  if (hcyGetClassID(part) != hcyGetClassID(whole)) {
    EXPECT_TRUE(hcyIsUint8(part) || hcyIsSparse(part));
    EXPECT_EQ(hcyGetData(part), nullptr);
    EXPECT_EQ(hcyGetNzmax(part), hcyIsSparse(part) ? 0 : SIZE_MAX);
    return;
  }
  expectElements(part, whole);
  expectText(part, whole);
  expectFields(part, whole);
  if (!hcyIsCell(part)) return;
  for (std::size_t i = 0; i < hcyGetNumberOfElements(part); ++i) {
    const auto element = test::owned(hcyGetCell(part, i));
    if (!element) continue;
    expectPart(element.get(), test::owned(hcyGetCell(whole, i)).get());
    EXPECT_EQ(hcyGetNumberOfDimensions(element.get()), 2U);
  }
}

// How much is handed out, counting elements of any depth.
std::size_t handedOut(const hcyArray* array) {
  std::size_t count = hcyGetData(array) != nullptr || hcyGetLogicals(array) != nullptr ||
                      hcyGetChars(array) != nullptr;
  for (std::size_t i = 0; i < hcyGetNumberOfElements(array); ++i) {
    if (const auto element = test::owned(hcyGetCell(array, i))) count += handedOut(element.get());
    for (int field = 0; field < hcyGetNumberOfFields(array); ++field) {
      const auto element = test::owned(hcyGetFieldByNumber(array, i, field));
      if (element) count += handedOut(element.get());
    }
  }
  return count;
}

TEST(CutReply, HandsOutOnlyWhatTheWholeOneHasAtTheSamePlace) {
  for (const VORTEN_Array& message : replies()) {
    const std::string bytes = message.SerializeAsString();
    const ArrayHandle whole = received(bytes);
    for (std::size_t size = 0; size <= bytes.size() && !HasFailure(); ++size) {
      SCOPED_TRACE("type " + std::to_string(message.type()) + ", " + std::to_string(size) + " of " +
                   std::to_string(bytes.size()) + " bytes");
      const ArrayHandle part = received(std::string_view(bytes).substr(0, size));
      expectPart(part.get(), whole.get());
      expectPart(test::owned(hcyDuplicateArray(part.get())).get(), whole.get());
    }
  }
}

// What has arrived whole stays handed out.
TEST(CutReply, HandsOutMoreTheMoreHasArrived) {
  for (const VORTEN_Array& message : replies()) {
    const std::string bytes = message.SerializeAsString();
    const std::size_t all = handedOut(received(bytes).get());
    std::size_t before = 0;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
      const std::size_t now = handedOut(received(std::string_view(bytes).substr(0, size)).get());
      EXPECT_GE(now, before) << message.type() << ", " << size;
      before = now;
    }
    EXPECT_EQ(before, all);
    EXPECT_GT(all, 0U);
  }
}

}  // namespace
}  // namespace hcy
