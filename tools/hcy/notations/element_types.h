// SPDX-License-Identifier: Apache-2.0
//
// From the class of an array to the type of its elements.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <stdexcept>
#include <type_traits>

namespace hcy::tools {

using hcyclient::Array;
using hcyclient::Shape;

// Calls `use` with a value-less std::type_identity of the element type.
template <class Use>
decltype(auto) withElementType(hcyClassID classId, Use&& use) {
  switch (classId) {
    case hcyUINT8_CLASS:
      return use(std::type_identity<std::uint8_t>());
    case hcyINT8_CLASS:
      return use(std::type_identity<std::int8_t>());
    case hcyUINT16_CLASS:
      return use(std::type_identity<std::uint16_t>());
    case hcyINT16_CLASS:
      return use(std::type_identity<std::int16_t>());
    case hcyUINT32_CLASS:
      return use(std::type_identity<std::uint32_t>());
    case hcyINT32_CLASS:
      return use(std::type_identity<std::int32_t>());
    case hcyUINT64_CLASS:
      return use(std::type_identity<std::uint64_t>());
    case hcyINT64_CLASS:
      return use(std::type_identity<std::int64_t>());
    case hcySINGLE_CLASS:
      return use(std::type_identity<float>());
    case hcyDOUBLE_CLASS:
      return use(std::type_identity<double>());
    case hcyLOGICAL_CLASS:
      return use(std::type_identity<bool>());
    case hcyCHAR_CLASS:
      return use(std::type_identity<char16_t>());
    default:
      throw std::invalid_argument("a container has no elements of one type");
  }
}

// Whether arrays of elements of this type may be complex.
template <class T>
inline constexpr bool isNumber = !std::is_same_v<T, bool> && !std::is_same_v<T, char16_t>;

}  // namespace hcy::tools
