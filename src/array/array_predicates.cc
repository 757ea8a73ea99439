// SPDX-License-Identifier: Apache-2.0
//
// What class an array has, and how large it is.

#include <algorithm>
#include <cstring>

#include "array/array_handle.h"
#include "wire/array_attributes.h"
#include "wire/element_count.h"

using hcy::dataOf;
using hcy::proxyOf;
using hcy::client::VORTEN_Array;

namespace {

bool isType(const hcyArray* array, VORTEN_Array::QXType type) {
  return dataOf(array).type() == type;
}

bool isSparseOf(const hcyArray* array, VORTEN_Array::Sparse::SparseType type) {
  return hcyIsSparse(array) && dataOf(array).sparse().type() == type;
}

// Whether the one element of a 1-by-1 sparse logical array is stored, and true.
bool storesTrue(const VORTEN_Array::Sparse& sparse) {
  const auto& starts = sparse.jc();
  const auto& values = sparse.logical().elements();
  return starts.size() > 1 && starts[0] == 0 && starts[1] == 1 && !values.empty() && values[0];
}

}  // namespace

bool hcyIsUint8(const hcyArray* array) { return isType(array, VORTEN_Array::UINT8); }
bool hcyIsInt8(const hcyArray* array) { return isType(array, VORTEN_Array::INT8); }
bool hcyIsUint16(const hcyArray* array) { return isType(array, VORTEN_Array::UINT16); }
bool hcyIsInt16(const hcyArray* array) { return isType(array, VORTEN_Array::INT16); }
bool hcyIsUint32(const hcyArray* array) { return isType(array, VORTEN_Array::UINT32); }
bool hcyIsInt32(const hcyArray* array) { return isType(array, VORTEN_Array::INT32); }
bool hcyIsUint64(const hcyArray* array) { return isType(array, VORTEN_Array::UINT64); }
bool hcyIsInt64(const hcyArray* array) { return isType(array, VORTEN_Array::INT64); }
bool hcyIsSingle(const hcyArray* array) { return isType(array, VORTEN_Array::SINGLE); }
bool hcyIsChar(const hcyArray* array) { return isType(array, VORTEN_Array::CHAR); }
bool hcyIsStruct(const hcyArray* array) { return isType(array, VORTEN_Array::STRUCT); }
bool hcyIsCell(const hcyArray* array) { return isType(array, VORTEN_Array::CELL); }
bool hcyIsSparse(const hcyArray* array) { return isType(array, VORTEN_Array::SPARSE); }

bool hcyIsDouble(const hcyArray* array) {
  return isType(array, VORTEN_Array::DOUBLE) || isSparseOf(array, VORTEN_Array::Sparse::DOUBLE);
}

bool hcyIsLogical(const hcyArray* array) {
  return isType(array, VORTEN_Array::LOGICAL) || isSparseOf(array, VORTEN_Array::Sparse::LOGICAL);
}

bool hcyIsNumeric(const hcyArray* array) { return hcy::attributesOf(dataOf(array)).isNumeric; }

bool hcyIsComplex(const hcyArray* array) { return proxyOf(array).isComplex(); }

bool hcyIsEmpty(const hcyArray* array) {
  const auto& dimensions = dataOf(array).dimensions;
  return dimensions.empty() || std::ranges::count(dimensions, 0U) != 0;
}

bool hcyIsLogicalScalar(const hcyArray* array) {
  const auto& dimensions = dataOf(array).dimensions;
  return hcyIsLogical(array) && dimensions.size() == 2 && dimensions[0] == 1 && dimensions[1] == 1;
}

bool hcyIsLogicalScalarTrue(const hcyArray* array) {
  if (!hcyIsLogicalScalar(array)) return false;
  if (hcyIsSparse(array)) return storesTrue(dataOf(array).sparse());
  const auto values = dataOf(array).real.as<bool>();
  return !values.empty() && values[0];
}

bool hcyIsClass(const hcyArray* array, const char* name) {
  // Sparse values are double or logical; other sparse arrays have no name.
  if (hcyIsSparse(array) && !hcyIsDouble(array) && !hcyIsLogical(array)) return false;
  return std::strcmp(name, hcyGetClassName(array)) == 0;
}

hcyClassID hcyGetClassID(const hcyArray* array) {
  return static_cast<hcyClassID>(hcy::attributesOf(dataOf(array)).type);
}

const char* hcyGetClassName(const hcyArray* array) {
  return hcy::attributesOf(dataOf(array)).className;
}

size_t hcyGetElementSize(const hcyArray* array) { return proxyOf(array).getElementSize(); }

size_t hcyGetNumberOfElements(const hcyArray* array) { return hcy::elementCount(dataOf(array)); }
