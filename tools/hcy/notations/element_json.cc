// SPDX-License-Identifier: Apache-2.0

#include "notations/element_json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace hcy::tools {

namespace {

// The fewest digits that are read as the same number, without an exponent from 0.0001 to below
// 1e16, as Python writes it: shells calculate with whole numbers.
template <class T>
char* writeNumber(char* begin, char* end, T number) {
  if constexpr (std::is_floating_point_v<T>) {
    const T size = std::abs(number);
    const bool isFixed = size == 0 || (size >= static_cast<T>(1e-4) && size < static_cast<T>(1e16));
    return std::to_chars(begin, end, number,
                         isFixed ? std::chars_format::fixed : std::chars_format::scientific)
        .ptr;
  } else {
    return std::to_chars(begin, end, number).ptr;
  }
}

}  // namespace

template <class T>
void appendElement(std::string& out, T element) {
  if constexpr (std::is_same_v<T, bool>) {
    out += element ? "true" : "false";
  } else if constexpr (std::is_same_v<T, char16_t>) {
    out += std::to_string(static_cast<unsigned>(element));
  } else {
    if constexpr (std::is_floating_point_v<T>) {
      if (std::isnan(element)) return void(out += "\"NaN\"");
      if (std::isinf(element)) return void(out += element < 0 ? "\"-Infinity\"" : "\"Infinity\"");
      // A zero without a point would be an integer to other readers, and lose its sign.
      if (element == 0 && std::signbit(element)) return void(out += "-0.0");
    }
    std::array<char, 32> digits{};
    out.append(digits.data(), writeNumber(digits.data(), digits.data() + digits.size(), element));
  }
}

template void appendElement(std::string&, bool);
template void appendElement(std::string&, char16_t);
template void appendElement(std::string&, std::uint8_t);
template void appendElement(std::string&, std::int8_t);
template void appendElement(std::string&, std::uint16_t);
template void appendElement(std::string&, std::int16_t);
template void appendElement(std::string&, std::uint32_t);
template void appendElement(std::string&, std::int32_t);
template void appendElement(std::string&, std::uint64_t);
template void appendElement(std::string&, std::int64_t);
template void appendElement(std::string&, float);
template void appendElement(std::string&, double);

}  // namespace hcy::tools
