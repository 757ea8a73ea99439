// SPDX-License-Identifier: Apache-2.0
//
// The ways in which a program comes to a handle over an array: the array itself, copies of it, and
// elements of containers.

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/wrapped_arrays.h"

namespace hcy::test {

// The array alone in a 1-by-1 cell or struct.
inline VORTEN_Array inCell(const VORTEN_Array& element) {
  VORTEN_Array cell = arrayOf(VORTEN_Array::CELL, {1, 1});
  *cell.mutable_cell()->add_elements() = element;
  return cell;
}
inline VORTEN_Array inStruct(const VORTEN_Array& element) {
  VORTEN_Array structure = arrayOf(VORTEN_Array::STRUCT, {1, 1});
  structure.mutable_struct_()->add_field_names("a");
  *structure.mutable_struct_()->add_elements() = element;
  return structure;
}

inline ArrayHandle duplicateOf(const ArrayHandle& array) {
  return owned(hcyDuplicateArray(array.get()));
}
inline ArrayHandle onlyElementOf(const ArrayHandle& container) {
  return owned(hcyIsCell(container.get()) ? hcyGetCell(container.get(), 0)
                                          : hcyGetField(container.get(), 0, "a"));
}
inline ArrayHandle newCellWith(const ArrayHandle& value) {
  auto cell = owned(hcyCreateCellMatrix(1, 1));
  hcySetCell(cell.get(), 0, value.get());
  return cell;
}
inline ArrayHandle newStructWith(const ArrayHandle& value) {
  const char* const name = "a";
  auto structure = owned(hcyCreateStructMatrix(1, 1, 1, &name));
  hcySetField(structure.get(), 0, name, value.get());
  return structure;
}

// What a program can do with an array and have the same array again.
using Detour = std::pair<std::string, std::function<ArrayHandle(ArrayHandle)>>;
inline std::vector<Detour> detours() {
  return {
      {"itself", [](ArrayHandle array) { return array; }},
      {"its duplicate", [](const ArrayHandle& array) { return duplicateOf(array); }},
      {"the duplicate of its duplicate",
       [](const ArrayHandle& array) { return duplicateOf(duplicateOf(array)); }},
      {"stored in a cell",
       [](const ArrayHandle& array) { return onlyElementOf(newCellWith(array)); }},
      {"stored in a struct",
       [](const ArrayHandle& array) { return onlyElementOf(newStructWith(array)); }},
      {"stored in a struct in a cell",
       [](const ArrayHandle& array) {
         return onlyElementOf(onlyElementOf(newCellWith(newStructWith(array))));
       }},
      {"stored in a cell in a cell, of which there is a duplicate", [](const ArrayHandle& array) {
         return onlyElementOf(onlyElementOf(duplicateOf(newCellWith(newCellWith(array)))));
       }}};
}

// The ways to an array of a reply, which may have come in a container.
using Way = std::pair<std::string, std::function<ArrayHandle(const VORTEN_Array&)>>;
inline std::vector<Way> waysFromReplies() {
  std::vector<Way> ways = {
      {"received in a cell",
       [](const VORTEN_Array& array) { return onlyElementOf(wrapped(inCell(array))); }},
      {"received in a struct",
       [](const VORTEN_Array& array) { return onlyElementOf(wrapped(inStruct(array))); }},
      {"received in a struct in a cell",
       [](const VORTEN_Array& array) {
         return onlyElementOf(onlyElementOf(wrapped(inCell(inStruct(array)))));
       }},
      {"received in a cell, of which there is a duplicate", [](const VORTEN_Array& array) {
         return onlyElementOf(duplicateOf(wrapped(inCell(array))));
       }}};
  for (const auto& [name, detour] : detours()) {
    ways.emplace_back("received, " + name, [detour = detour](const VORTEN_Array& array) {
      return detour(wrapped(array));
    });
  }
  return ways;
}

}  // namespace hcy::test
