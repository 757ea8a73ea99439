// SPDX-License-Identifier: Apache-2.0
//
// Base 128 varints, one by one and packed.

#pragma once

#include <google/protobuf/repeated_field.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "wire/bytes.h"

namespace hcy {

constexpr std::size_t varintSize(std::uint64_t value) {
  return static_cast<std::size_t>(std::bit_width(value | 1) + 6) / 7;
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

// Appends packed varints, each converted to an element. False if they are broken or cut: then those
// before are there.
template <class Element>
bool readPacked(Bytes packed, google::protobuf::RepeatedField<Element>& list);
template <class Element>
bool readPacked(Bytes packed, std::vector<Element>& list);

// What 16-bit elements take as packed varints. A negative number takes ten bytes.
template <class Element>
std::size_t packedSize(std::span<const Element> elements);
template <class Element>
std::uint8_t* writePacked(std::span<const Element> elements, std::uint8_t* out);

}  // namespace hcy
