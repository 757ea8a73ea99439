// SPDX-License-Identifier: Apache-2.0
//
// Numbers for people to read.

#pragma once

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <type_traits>

namespace hcy::tools {

// Six significant digits, or all of a whole number below 2^53.
inline std::string textOf(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-Inf" : "Inf";
  constexpr double firstRounded = 9007199254740992;
  const bool isWhole = number == std::trunc(number) && std::abs(number) < firstRounded;
  std::array<char, 32> digits{};
  const int length = std::snprintf(digits.data(), digits.size(), isWhole ? "%.0f" : "%.6g", number);
  return {digits.data(), static_cast<std::size_t>(length)};
}

template <class T>
std::string textOf(T element) {
  if constexpr (std::is_same_v<T, bool>) {
    return element ? "true" : "false";
  } else if constexpr (std::is_floating_point_v<T>) {
    return textOf(static_cast<double>(element));
  } else {
    return std::to_string(element);
  }
}

template <class T>
std::string textOf(T real, T imaginary) {
  std::string text = textOf(imaginary);
  const bool isNegative = text.front() == '-';
  return textOf(real) + (isNegative ? " - " : " + ") + text.substr(isNegative ? 1 : 0) + "i";
}

}  // namespace hcy::tools
