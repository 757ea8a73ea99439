// SPDX-License-Identifier: Apache-2.0
//
// Handles over messages, as the outputs of a call are wrapped.

#pragma once

#include <memory>
#include <utility>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "support/array_messages.h"

namespace hcy::test {

inline ArrayHandle wrapped(VORTEN_Array array) {
  return ArrayProxyBuilder::over(std::make_shared<VORTEN_Array>(std::move(array)));
}

// Takes over what an exported function returned.
inline ArrayHandle owned(hcyArray* array) {
  return ArrayHandle(static_cast<VORTENArrayProxy*>(array));
}

// What would be sent of the array.
inline const VORTEN_Array& committed(const ArrayHandle& array) {
  array->commit();
  return messageOf(array.get());
}

// A cell array of the given shape with 1-by-1 int32 arrays for elements, or a struct array with
// the given fields and these as its slots.
inline VORTEN_Array cellOf(std::initializer_list<std::uint64_t> dimensions,
                           std::initializer_list<int> elements) {
  VORTEN_Array array = arrayOf(VORTEN_Array::CELL, dimensions);
  for (const int element : elements) {
    *array.mutable_cell()->add_elements() = rowOf<INT32_class>({element});
  }
  return array;
}
inline VORTEN_Array structOf(std::initializer_list<std::uint64_t> dimensions,
                             std::initializer_list<const char*> names,
                             std::initializer_list<int> slots) {
  VORTEN_Array array = arrayOf(VORTEN_Array::STRUCT, dimensions);
  for (const char* const name : names) array.mutable_struct_()->add_field_names(name);
  for (const int slot : slots) {
    *array.mutable_struct_()->add_elements() = rowOf<INT32_class>({slot});
  }
  return array;
}

// The scalars of the elements of a container's message.
template <class Elements>
Numbers scalarsOf(const Elements& elements) {
  Numbers values;
  for (const VORTEN_Array& element : elements) {
    values.push_back(element.int32().elements_size() > 0 ? element.int32().elements(0) : 0.0);
  }
  return values;
}

}  // namespace hcy::test
