// SPDX-License-Identifier: Apache-2.0
//
// The elements of an array from nested lists of JSON.

#pragma once

#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include "notations/element_types.h"
#include "notations/json_value.h"
#include "text/source_text.h"

namespace hcy::tools {

// The number of elements that an array can have, and the length of a dimension.
inline constexpr std::uint64_t kLargestSize = 2147483647;

// An integer from 0 to `largest`.
std::size_t sizeFrom(const JsonValue& value, std::uint64_t largest = kLargestSize);

// Two dimensions or more.
Shape shapeFrom(const JsonValue& value);

// The values of an array in column-major order.
struct Elements {
  Shape shape;
  std::vector<const JsonValue*> values;
};

// From a single value (1-by-1), a list (a row), or nested lists, of which the outermost is the
// first dimension.
Elements nestedElements(const JsonValue& data);

// From a list in column-major order that fills the shape.
Elements flatElements(const JsonValue& data, const JsonValue& shape);

inline Elements elementsOf(const JsonValue& data, const JsonValue* shape) {
  return shape == nullptr ? nestedElements(data) : flatElements(data, *shape);
}

// Throws BadText if the number of elements does not fit the shape.
void requireCount(const JsonValue& data, std::size_t count, const Shape& shape);

namespace detail {

template <std::floating_point T>
T numberFrom(const JsonValue& value, std::string_view token) {
  T number = 0;
  const auto read = std::from_chars(token.data(), token.data() + token.size(), number);
  if (read.ec == std::errc()) return number;
  // Too close to zero, or too far from it.
  const double wide = std::strtod(std::string(token).c_str(), nullptr);
  if (std::abs(wide) > 1) {
    const char* const name = std::is_same_v<T, float> ? "single" : "double";
    throw BadText(value.offset, std::string("the number is too large for a ") + name);
  }
  return static_cast<T>(wide);
}

template <std::integral T>
T numberFrom(const JsonValue& value, std::string_view token,
             T largest = std::numeric_limits<T>::max()) {
  T number = 0;
  const char* const end = token.data() + token.size();
  const auto read = std::from_chars(token.data(), end, number);
  if (read.ec == std::errc() && read.ptr == end && number <= largest) return number;
  if (token == "-0") return 0;
  const auto refuse = [&value](const std::string& wanted) {
    throw BadText(value.offset, "the number must be " + wanted);
  };
  if (token.find_first_of(".eE") != std::string_view::npos) {
    // With a point or an exponent: taken if no digit can have been lost.
    constexpr double firstRounded = 9007199254740992;
    const auto wide = numberFrom<double>(value, token);
    if (wide != std::trunc(wide)) refuse("an integer");
    if (std::abs(wide) >= firstRounded) refuse("written without a decimal point or an exponent");
    if (std::in_range<T>(static_cast<std::int64_t>(wide)) && static_cast<T>(wide) <= largest) {
      return static_cast<T>(wide);
    }
  }
  refuse("between " + std::to_string(std::numeric_limits<T>::min()) + " and " +
         std::to_string(largest));
  return 0;
}

}  // namespace detail

// One element: a number; for char a code unit; for logical true, false, 1 or 0; for double and
// single also "NaN", "Infinity" and "-Infinity".
template <class T>
T elementFrom(const JsonValue& value) {
  if constexpr (std::is_same_v<T, bool>) {
    if (const auto* const truth = value.as<bool>()) return *truth;
  }
  if constexpr (std::is_floating_point_v<T>) {
    if (const auto* const name = value.as<std::string>()) {
      if (*name == "NaN") return std::numeric_limits<T>::quiet_NaN();
      if (*name == "Infinity") return std::numeric_limits<T>::infinity();
      if (*name == "-Infinity") return -std::numeric_limits<T>::infinity();
      throw BadText(value.offset, R"(expected a number, "NaN", "Infinity" or "-Infinity")");
    }
  }
  const auto* const number = value.as<JsonNumber>();
  if constexpr (std::is_same_v<T, bool>) {
    if (number != nullptr && (number->token == "0" || number->token == "1")) {
      return number->token == "1";
    }
    throw BadText(value.offset, "expected true or false");
  } else {
    if (number == nullptr) throw BadText(value.offset, "expected a number");
    if constexpr (std::is_same_v<T, char16_t>) {
      return static_cast<char16_t>(detail::numberFrom<std::uint16_t>(value, number->token));
    } else {
      return detail::numberFrom<T>(value, number->token);
    }
  }
}

// Makes an array of the elements.
template <class T>
Array arrayOf(const Elements& elements) {
  Array array = Array::zeros<T>(elements.shape);
  const auto span = array.span<T>();
  for (std::size_t i = 0; i < span.size(); ++i) span[i] = elementFrom<T>(*elements.values[i]);
  return array;
}

}  // namespace hcy::tools
