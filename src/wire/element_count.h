// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>
#include <span>

namespace hcy {

// The product, or the largest value where it does not fit: a product that wrapped would make a
// huge array look small.
inline std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
  return b != 0 && a > largest / b ? largest : a * b;
}

// The product of the dimensions; 0 when there are none.
inline std::uint64_t elementCount(std::span<const std::uint64_t> dimensions) {
  if (dimensions.empty()) return 0;
  std::uint64_t product = 1;
  for (const std::uint64_t dimension : dimensions) product = saturatingProduct(product, dimension);
  return product;
}

}  // namespace hcy
