// SPDX-License-Identifier: Apache-2.0
//
// Elements of fixed width travel with their lowest byte first, whatever order the machine has.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "wire/bytes.h"

namespace hcy {

// Whether elements lie in memory as they travel.
template <class Element>
inline constexpr bool liesAsItTravels = sizeof(Element) == 1 || std::endian::native
                                                                    == std::endian::little;

// Copies elements of that size, the bytes of each in reverse order.
template <std::size_t kSize>
void copyReversed(Bytes elements, std::uint8_t* out) {
  for (std::size_t i = 0; i + kSize <= elements.size(); i += kSize) {
    const Bytes element = elements.subspan(i, kSize);
    std::reverse_copy(element.begin(), element.end(), out + i);
  }
}

// Copies elements from memory to a body, or from a body to memory; they may be none. Returns the
// end of the copies.
template <class Element>
std::uint8_t* copyFixedWidth(Bytes elements, std::uint8_t* out) {
  if (elements.empty()) return out;
  if constexpr (liesAsItTravels<Element>) {
    std::memcpy(out, elements.data(), elements.size());
  } else {
    copyReversed<sizeof(Element)>(elements, out);
  }
  return out + elements.size();
}

}  // namespace hcy
