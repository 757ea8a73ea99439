// SPDX-License-Identifier: Apache-2.0
//
// Elements of cell arrays, and fields of struct arrays.

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "array/struct_cell_array_proxy.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/element_count.h"

using hcy::dataOf;
using hcy::proxyOf;

namespace {

using CellProxy = hcy::VORTENStructCellArrayProxy<hcy::CELL_class>;
using StructProxy = hcy::VORTENStructCellArrayProxy<hcy::STRUCT_class>;

// The proxy of an array whose class has been tested: the type of an array decides its proxy's
// class, and never changes.
CellProxy& cellProxy(const hcyArray* array) { return static_cast<CellProxy&>(proxyOf(array)); }
StructProxy& structProxy(const hcyArray* array) {
  return static_cast<StructProxy&>(proxyOf(array));
}

const hcy::ContainerData& containerOf(const hcyArray* array) { return dataOf(array).container(); }

const hcy::FieldIndex::Names& namesOf(const hcyArray* array) {
  return containerOf(array).fieldNames;
}

bool hasElement(const hcyArray* array, size_t index) {
  return index < hcyGetNumberOfElements(array);
}

bool hasField(const hcyArray* array, int n) { return n >= 0 && n < hcyGetNumberOfFields(array); }

// The slot of a field in an element; none where the functions of fields refuse.
std::optional<size_t> slotOfField(const hcyArray* array, size_t index, const char* name) {
  const int field = hcyGetFieldNumber(array, name);
  if (field < 0 || !hasElement(array, index)) return std::nullopt;
  const auto fields = static_cast<size_t>(hcyGetNumberOfFields(array));
  // An element so far beyond the storage has no slot, whichever number it gets.
  const size_t first = std::min(hcy::saturatingProduct(index, fields), SIZE_MAX - fields);
  return first + static_cast<size_t>(field);
}

// A new handle to an element; null if there is none, or the library does not support its class.
hcyArray* handleOver(const hcy::ContentPtr& element) {
  if (!element || !hcy::isServedQXType(element->data.type())) return nullptr;
  return hcy::ArrayProxyBuilder::over(element).release();
}

}  // namespace

hcyArray* hcyGetCell(const hcyArray* array, size_t index) {
  if (!hcyIsCell(array) || !hasElement(array, index)) return nullptr;
  return handleOver(cellProxy(array).slot(index));
}

void hcySetCell(hcyArray* array, size_t index, hcyArray* value) {
  if (!hcyIsCell(array) || !hasElement(array, index)) return;
  cellProxy(array).setSlot(index, proxyOf(value));
}

int hcyGetNumberOfFields(const hcyArray* array) {
  return hcyIsStruct(array) ? static_cast<int>(namesOf(array).size()) : 0;
}

const char* hcyGetFieldNameByNumber(const hcyArray* array, int n) {
  return hasField(array, n) ? namesOf(array)[static_cast<size_t>(n)].c_str() : nullptr;
}

int hcyGetFieldNumber(const hcyArray* array, const char* name) {
  if (!hcyIsStruct(array) || name == nullptr) return -1;
  return containerOf(array).index.find(namesOf(array), name);
}

hcyArray* hcyGetField(const hcyArray* array, size_t index, const char* name) {
  const auto slot = slotOfField(array, index, name);
  return slot ? handleOver(structProxy(array).slot(*slot)) : nullptr;
}

void hcySetField(hcyArray* array, size_t index, const char* name, hcyArray* value) {
  const auto slot = slotOfField(array, index, name);
  if (slot) structProxy(array).setSlot(*slot, proxyOf(value));
}

hcyArray* hcyGetFieldByNumber(const hcyArray* array, size_t index, int n) {
  return hcyGetField(array, index, hcyGetFieldNameByNumber(array, n));
}

void hcySetFieldByNumber(hcyArray* array, size_t index, int n, hcyArray* value) {
  hcySetField(array, index, hcyGetFieldNameByNumber(array, n), value);
}

int hcyAddField(hcyArray* array, const char* name) {
  if (!hcyIsStruct(array) || name == nullptr) return -1;
  try {
    const int existing = containerOf(array).index.findBeforeChange(namesOf(array), name);
    if (existing >= 0) return existing;
    return structProxy(array).addField(name) ? hcyGetNumberOfFields(array) - 1 : -1;
  } catch (const std::exception&) {
    return -1;
  }
}

void hcyRemoveField(hcyArray* array, int n) {
  if (!hasField(array, n)) return;
  try {
    structProxy(array).removeField(static_cast<size_t>(n));
  } catch (const std::exception&) {
    return;  // the array is as it was
  }
}
