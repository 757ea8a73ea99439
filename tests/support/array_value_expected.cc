// SPDX-License-Identifier: Apache-2.0
//
// Values against arrays.

#include <gtest/gtest.h>

#include "array_value.h"

namespace hcy::abi {
namespace {

void* elementsOf(const hcyArray* array) {
  if (hcyGetClassID(array) == hcyLOGICAL_CLASS) return hcyGetLogicals(array);
  if (hcyGetClassID(array) == hcyCHAR_CLASS) return hcyGetChars(array);
  return hcyGetData(array);
}

void expectElements(const void* elements, const std::string& bytes) {
  ASSERT_EQ(elements == nullptr, bytes.empty());
  if (bytes.empty()) return;
  EXPECT_EQ(std::string(static_cast<const char*>(elements), bytes.size()), bytes);
}

void expectSizes(const std::size_t* sizes, const std::vector<std::size_t>& expected) {
  ASSERT_EQ(sizes == nullptr, expected.empty());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(sizes[i], expected[i]) << i;
}

void expectSparse(const hcyArray* array, const Value& value) {
  ASSERT_EQ(hcyGetNzmax(array), value.rows.size());
  expectSizes(hcyGetIr(array), value.rows);
  expectSizes(hcyGetJc(array), value.columnStarts);
}

void expectCell(const hcyArray* array, const Value& value) {
  for (std::size_t i = 0; i < value.values.size(); ++i) {
    SCOPED_TRACE("cell " + std::to_string(i));
    const OwnedArray element(hcyGetCell(array, i));
    expectArray(element.get(), value.values[i]);
  }
}

void expectStruct(const hcyArray* array, const Value& value) {
  const std::size_t count = value.fields.size();
  ASSERT_EQ(hcyGetNumberOfFields(array), static_cast<int>(count));
  for (std::size_t f = 0; f < count; ++f) {
    EXPECT_EQ(hcyGetFieldNameByNumber(array, static_cast<int>(f)), value.fields[f]);
  }
  for (std::size_t i = 0; i < value.values.size(); ++i) {
    SCOPED_TRACE("field " + value.fields[i % count] + " of element " + std::to_string(i / count));
    const OwnedArray element(hcyGetField(array, i / count, value.fields[i % count].c_str()));
    expectArray(element.get(), value.values[i]);
  }
}

}  // namespace

void expectArray(const hcyArray* array, const Value& value) {
  ASSERT_NE(array, nullptr);
  ASSERT_EQ(hcyGetClassID(array), value.classId);
  ASSERT_EQ(hcyIsSparse(array), value.isSparse);
  EXPECT_EQ(hcyIsComplex(array), !value.imaginary.empty());
  ASSERT_EQ(hcyGetNumberOfDimensions(array), value.dimensions.size());
  expectSizes(hcyGetDimensions(array), value.dimensions);
  if (value.classId == hcyCELL_CLASS) return expectCell(array, value);
  if (value.classId == hcySTRUCT_CLASS) return expectStruct(array, value);
  if (value.isSparse) {
    expectSparse(array, value);
  } else {
    ASSERT_EQ(hcyGetNumberOfElements(array) * hcyGetElementSize(array), value.real.size());
  }
  expectElements(elementsOf(array), value.real);
  expectElements(hcyGetImagData(array), value.imaginary);
}

}  // namespace hcy::abi
