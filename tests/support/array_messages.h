// SPDX-License-Identifier: Apache-2.0
//
// Messages of arrays, as a reply could bring them, for the tests of inner classes.

#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "support/array_class_lists.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/read_array.h"
#include "wire/write_array.h"

namespace hcy::test {

// Types that a reply may bring and the library has no class for.
inline const std::vector<int> unservedTypes = {15, 16, 17, 18, 19, 20, 1000, -1};

inline VORTEN_Array::QXType asType(int number) { return static_cast<VORTEN_Array::QXType>(number); }

inline VORTEN_Array arrayOf(int type, std::initializer_list<std::uint64_t> dimensions) {
  VORTEN_Array array;
  array.set_type(asType(type));
  for (const std::uint64_t dimension : dimensions) array.add_dimension(dimension);
  return array;
}

// An array as it is held, read from its message.
inline ArrayData dataOf(const VORTEN_Array& message) {
  const std::string bytes = message.SerializeAsString();
  ArrayData array;
  EXPECT_TRUE(
      readArray(array, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
  return array;
}

// The bytes that it is sent as.
inline std::string writtenBytes(const ArrayData& array) {
  const WrittenArray written(array);
  std::string bytes(written.size(), '\0');
  auto* const begin = reinterpret_cast<std::uint8_t*>(bytes.data());
  EXPECT_EQ(written.write(begin), begin + bytes.size());
  return bytes;
}

using Numbers = std::vector<double>;

// The elements of a byte string or a repeated field.
template <class Elements>
Numbers numbers(const Elements& elements) {
  Numbers values;
  for (const auto element : elements) values.push_back(static_cast<double>(element));
  return values;
}

inline void assign(std::string* elements, std::initializer_list<int> values) {
  for (const int value : values) elements->push_back(static_cast<char>(value));
}
template <class Element>
void assign(google::protobuf::RepeatedField<Element>* elements, std::initializer_list<int> values) {
  for (const int value : values) elements->Add(static_cast<Element>(value));
}

// A row of a full class whose elements are numbers.
template <class Class>
VORTEN_Array rowOf(std::initializer_list<int> values) {
  VORTEN_Array array = arrayOf(Class::type, {1, values.size()});
  assign(Class::write(array).mutable_elements(), values);
  return array;
}

template <class Class>
VORTEN_Array complexRowOf(std::initializer_list<int> real, std::initializer_list<int> imaginary) {
  VORTEN_Array array = rowOf<Class>(real);
  assign(Class::write(array).mutable_imag_elements(), imaginary);
  return array;
}

// A sparse array of a value type, which may be any number, without values.
inline VORTEN_Array sparseOf(int type, std::initializer_list<std::uint64_t> dimensions = {3, 3},
                             std::initializer_list<int> rows = {},
                             std::initializer_list<int> starts = {}) {
  VORTEN_Array array = arrayOf(VORTEN_Array::SPARSE, dimensions);
  array.mutable_sparse()->set_type(static_cast<VORTEN_Array::Sparse::SparseType>(type));
  assign(array.mutable_sparse()->mutable_ir(), rows);
  assign(array.mutable_sparse()->mutable_jc(), starts);
  return array;
}

// The number of the typed sub-message's field. They follow the order of the types from 16 on, but
// for struct and cell, which change places.
inline int partNumber(int type) {
  if (type == VORTEN_Array::STRUCT) return 29;
  if (type == VORTEN_Array::CELL) return 28;
  return 16 + type;
}

// Whether the typed sub-message of the array's class is present.
inline bool hasTypedPart(const VORTEN_Array& array) {
  const auto* const field = array.GetDescriptor()->FindFieldByNumber(partNumber(array.type()));
  return array.GetReflection()->HasField(array, field);
}

inline bool isEmptyDouble(const VORTEN_Array& array) {
  return array.SerializeAsString() == arrayOf(VORTEN_Array::DOUBLE, {0, 0}).SerializeAsString();
}

}  // namespace hcy::test
