// SPDX-License-Identifier: Apache-2.0
//
// The single switch over the array class.

#pragma once

#include "wire/array_class_traits.h"

namespace hcy {

// Whether the library has an array class for the type; types of a reply may be any number.
constexpr bool isServedQXType(VORTEN_Array::QXType type) {
  return type >= VORTEN_Array::UINT8 && type <= VORTEN_Array::SPARSE;
}

// Throws std::invalid_argument "dispatch_on_QXType".
[[noreturn]] void failUnservedQXType();

#define HCY_ARRAY_CLASS_CASE(type_, name, storage, field, Message, Element, is_numeric) \
  case VORTEN_Array::type_:                                                             \
    return visitor(type_##_class{});

// Calls the visitor with the traits of the class; throws std::invalid_argument
// "dispatch_on_QXType" for a type that the library has no class for.
template <class Visitor>
decltype(auto) dispatch_on_QXType(VORTEN_Array::QXType type, Visitor&& visitor) {
  switch (type) {
    HCY_ARRAY_CLASSES(HCY_ARRAY_CLASS_CASE)
    default:
      failUnservedQXType();
  }
}

#undef HCY_ARRAY_CLASS_CASE

}  // namespace hcy
