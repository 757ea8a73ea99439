// SPDX-License-Identifier: Apache-2.0
//
// Base 128 varints, one by one.

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace hcy {

inline constexpr std::size_t kLongestVarint = 10;

constexpr std::size_t varintSize(std::uint64_t value) {
  // The place of the highest bit, as one instruction finds it.
  const auto highest = static_cast<std::size_t>(std::countl_zero(value | 1)) ^ 63U;
  return (highest * 9 + 73) / 64;
}

// Writes the shortest form and returns its end.
inline std::uint8_t* writeVarint(std::uint64_t value, std::uint8_t* out) {
  for (; value >= 0x80; value >>= 7) *out++ = static_cast<std::uint8_t>(value | 0x80);
  *out++ = static_cast<std::uint8_t>(value);
  return out;
}

// Reads the varint at `position`, which is moved behind it; ten bytes are the most that there may
// be. If there is none before the end, `position` becomes null.
inline std::uint64_t readVarint(const std::uint8_t*& position, const std::uint8_t* end) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; position != end && shift < 70; shift += 7) {
    const std::uint64_t byte = *position++;
    value |= (byte & 0x7FU) << shift;
    if (byte < 0x80) return value;
  }
  position = nullptr;
  return 0;
}

}  // namespace hcy
