// SPDX-License-Identifier: Apache-2.0
//
// Values to arrays.

#include <algorithm>
#include <stdexcept>

#include "array_value.h"

namespace hcy::abi {
namespace {

// Not even asked for when there is nothing to store: asking marks the elements as present.
void store(const std::string& bytes, void* destination) {
  bytes.copy(static_cast<char*>(destination), bytes.size());
}

OwnedArray makeSparse(const Value& value) {
  const std::size_t m = value.dimensions[0], n = value.dimensions[1], nzmax = value.rows.size();
  const bool isDouble = value.classId == hcyDOUBLE_CLASS;
  OwnedArray array(
      isDouble ? hcyCreateSparse(m, n, nzmax, value.imaginary.empty() ? hcyREAL : hcyCOMPLEX)
               : hcyCreateSparseLogicalMatrix(m, n, nzmax));
  std::ranges::copy(value.rows, hcyGetIr(array.get()));
  std::ranges::copy(value.columnStarts, hcyGetJc(array.get()));
  if (!isDouble) {
    store(value.real, hcyGetLogicals(array.get()));
  } else {
    if (!value.real.empty()) store(value.real, hcyGetPr(array.get()));
    if (!value.imaginary.empty()) store(value.imaginary, hcyGetPi(array.get()));
  }
  return array;
}

OwnedArray makeCell(const Value& value) {
  OwnedArray array(hcyCreateCellArray(value.dimensions.size(), value.dimensions.data()));
  for (std::size_t i = 0; i < value.values.size(); ++i) {
    if (!value.values[i].isNeverSet) hcySetCell(array.get(), i, makeArray(value.values[i]).get());
  }
  return array;
}

OwnedArray makeStruct(const Value& value) {
  std::vector<const char*> names;
  for (const std::string& field : value.fields) names.push_back(field.c_str());
  OwnedArray array(hcyCreateStructArray(value.dimensions.size(), value.dimensions.data(),
                                        static_cast<int>(names.size()), names.data()));
  for (std::size_t i = 0; i < value.values.size(); ++i) {
    if (value.values[i].isNeverSet) continue;
    hcySetField(array.get(), i / names.size(), names[i % names.size()],
                makeArray(value.values[i]).get());
  }
  return array;
}

OwnedArray makeLogical(const Value& value) {
  OwnedArray array(hcyCreateLogicalArray(value.dimensions.size(), value.dimensions.data()));
  if (!value.real.empty()) store(value.real, hcyGetLogicals(array.get()));
  return array;
}

OwnedArray makeChar(const Value& value) {
  OwnedArray array(hcyCreateCharArray(value.dimensions.size(), value.dimensions.data()));
  if (!value.real.empty()) store(value.real, hcyGetChars(array.get()));
  return array;
}

OwnedArray makeNumeric(const Value& value) {
  OwnedArray array(hcyCreateNumericArray(value.dimensions.size(), value.dimensions.data(),
                                         value.classId,
                                         value.imaginary.empty() ? hcyREAL : hcyCOMPLEX));
  if (!value.real.empty()) store(value.real, hcyGetData(array.get()));
  if (!value.imaginary.empty()) store(value.imaginary, hcyGetImagData(array.get()));
  return array;
}

}  // namespace

OwnedArray makeArray(const Value& value) {
  if (value.isSparse) return makeSparse(value);
  switch (value.classId) {
    case hcyCELL_CLASS:
      return makeCell(value);
    case hcySTRUCT_CLASS:
      return makeStruct(value);
    case hcyLOGICAL_CLASS:
      return makeLogical(value);
    case hcyCHAR_CLASS:
      return makeChar(value);
    default:
      return makeNumeric(value);
  }
}

}  // namespace hcy::abi
