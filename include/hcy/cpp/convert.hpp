/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file convert.hpp
 * @brief Exact conversion of numbers between types. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_CONVERT_HPP
#define HCY_CPP_CONVERT_HPP

#include <cmath>
#include <hcy/cpp/element.hpp>
#include <limits>
#include <type_traits>

namespace hcyclient {

namespace detail {

// Whether a whole number fits an integer type.
template <class To>
bool isInRange(double whole) noexcept {
  // 2 to the number of digits, which a double holds exactly, unlike the largest integer.
  const double end = std::ldexp(1.0, std::numeric_limits<To>::digits);
  return whole < end && (std::is_signed_v<To> ? whole >= -end : whole >= 0);
}

// Stores the number as another type; returns false if that type cannot represent it exactly.
template <class To, class From>
bool convertExactly(From from, To& to) noexcept {
  if constexpr (std::is_same_v<To, From>) {
    to = from;
    return true;
  } else if constexpr (std::is_same_v<To, bool>) {
    to = from != From(0);
    return from == From(0) || from == From(1);
  } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
    if (from != std::trunc(from) || !isInRange<To>(static_cast<double>(from))) return false;
    to = static_cast<To>(from);
    return true;
  } else if constexpr (std::is_floating_point_v<From>) {
    to = static_cast<To>(from);
    return std::isnan(from) || static_cast<From>(to) == from;
  } else if constexpr (std::is_floating_point_v<To>) {
    to = static_cast<To>(from);
    From back{};
    return convertExactly(to, back) && back == from;
  } else {
    to = static_cast<To>(from);
    return static_cast<From>(to) == from && (to < To(0)) == (from < From(0));
  }
}

// The same for complex numbers; if To has no imaginary part, that of the number must be 0.
template <class To, class From>
bool convertParts(From real, From imaginary, To& to) noexcept {
  if constexpr (Parts<To>::areTwo) {
    Part<To> parts[2] = {};
    if (!convertExactly(real, parts[0]) || !convertExactly(imaginary, parts[1])) return false;
    to = To(parts[0], parts[1]);
    return true;
  } else {
    return imaginary == From(0) && convertExactly(real, to);
  }
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_CONVERT_HPP
