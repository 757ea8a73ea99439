// SPDX-License-Identifier: Apache-2.0

#include "notations/element_json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace hcy::tools {

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
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), element).ptr;
    out.append(digits.data(), end);
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
