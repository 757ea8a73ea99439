// SPDX-License-Identifier: Apache-2.0
//
// 16-bit elements travel as 32-bit values; the caller works on a buffer of the true width.

#pragma once

#include <google/protobuf/repeated_field.h>

#include <algorithm>
#include <vector>

#include "wire/checked_size.h"

namespace hcy {

// The low 16 bits of each value.
template <class Element, class WireElement>
std::vector<Element> narrowed(const google::protobuf::RepeatedField<WireElement>& field) {
  std::vector<Element> buffer(static_cast<std::size_t>(field.size()));
  std::ranges::transform(field, buffer.begin(),
                         [](WireElement value) { return static_cast<Element>(value); });
  return buffer;
}

// Makes the field the whole buffer, whatever it held.
template <class Element, class WireElement>
void widen(const std::vector<Element>& buffer,
           google::protobuf::RepeatedField<WireElement>& field) {
  field.Resize(checkedSize(buffer.size()), 0);
  std::ranges::copy(buffer, field.mutable_data());
}

// Null also for fewer elements than are required.
template <class Element>
Element* firstOrNull(std::vector<Element>& buffer, std::size_t required) {
  return buffer.empty() || buffer.size() < required ? nullptr : buffer.data();
}

template <class Element>
double firstAsDouble(const std::vector<Element>& buffer) {
  return buffer.empty() ? 0.0 : static_cast<double>(buffer.front());
}

}  // namespace hcy
