// SPDX-License-Identifier: Apache-2.0
//
// What is known of each array class, made from the library's list of classes.

#pragma once

#include <cstddef>

#include "support/abi.h"
#include "wire/array_classes.h"

namespace hcy::abi {

// Elements of one type behind a data pointer, as numbers.
template <class Element>
struct ElementAccess {
  static constexpr std::size_t size = sizeof(Element);
  static double read(const void* data, std::size_t index) {
    return static_cast<double>(static_cast<const Element*>(data)[index]);
  }
  static void write(void* data, std::size_t index, double value) {
    static_cast<Element*>(data)[index] = static_cast<Element>(value);
  }
};
// The elements of containers are arrays, and a sparse array has those of the class of its values.
template <>
struct ElementAccess<void*> {
  static constexpr std::size_t size = sizeof(void*);
  static constexpr auto read = nullptr;
  static constexpr auto write = nullptr;
};
template <>
struct ElementAccess<void> {
  static constexpr std::size_t size = 0;
  static constexpr auto read = nullptr;
  static constexpr auto write = nullptr;
};

struct ClassFacts {
  const char* identifier;
  const char* name;
  ElementStorage storage;
  std::size_t elementSize;
  bool isNumeric;
  bool (*predicate)(const hcyArray*);  // the one that names the class
  double (*read)(const void* data, std::size_t index);
  void (*write)(void* data, std::size_t index, double value);
};

#define HCY_CLASS_FACTS(type, name, storage, field, Message, Element, is_numeric) \
  ClassFacts{#type,                                                               \
             name,                                                                \
             ElementStorage::storage,                                             \
             ElementAccess<Element>::size,                                        \
             is_numeric,                                                          \
             [](const hcyArray* array) { return hcyIs##Message(array); },         \
             ElementAccess<Element>::read,                                        \
             ElementAccess<Element>::write},
// By class ID; behind them the sparse kind, which has no class ID.
inline const ClassFacts classFacts[] = {HCY_ARRAY_CLASSES(HCY_CLASS_FACTS)};
#undef HCY_CLASS_FACTS

inline constexpr hcyClassID classCount = hcyCELL_CLASS + 1;

}  // namespace hcy::abi
