// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <type_traits>

#include "wire/ascii_runs.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/varint_ends.h"

namespace hcy {
namespace {

template <class Element>
std::size_t varintSizeOf(Element element) {
  if constexpr (sizeof(Element) == 8) {
    return varintSize(static_cast<std::uint64_t>(element));
  } else {
    if constexpr (std::is_signed_v<Element>) {
      if (element < 0) return kLongestVarint;
    }
    const auto value = static_cast<std::uint16_t>(element);
    return 1U + (value >= 0x80) + (value >= 0x4000);
  }
}

// The highest bits of the first eight bytes of a varint of each length.
constexpr std::uint64_t continued[kLongestVarint + 1] = {0,
                                                         0,
                                                         0x80,
                                                         0x8080,
                                                         0x808080,
                                                         0x80808080,
                                                         0x8080808080,
                                                         0x808080808080,
                                                         0x80808080808080,
                                                         0x8080808080808080,
                                                         0x8080808080808080};

// Groups of seven bits, each in a byte.
constexpr std::uint64_t spread(std::uint64_t bits) {
  bits = (bits & 0x000000000FFFFFFFU) | (bits & 0x00FFFFFFF0000000U) << 4;
  bits = (bits & 0x00003FFF00003FFFU) | (bits & 0x0FFFC0000FFFC000U) << 2;
  return (bits & 0x007F007F007F007FU) | (bits & 0x3F803F803F803F80U) << 1;
}

// Writes an element where there is room for ten bytes. The numbers follow one another at random, so
// there is no branch for each length.
template <class Element>
requires(sizeof(Element) == 8) std::uint8_t* writeIntoTen(Element element, std::uint8_t* out) {
  const auto value = static_cast<std::uint64_t>(element);
  const std::size_t length = varintSize(value);
  storeLittleEndian(spread(value) | continued[length], out);
  out[8] = static_cast<std::uint8_t>((value >> 56 & 0x7F) | (value >> 63) << 7);
  out[9] = 1;
  return out + length;
}

template <class Element>
requires(sizeof(Element) == 2) std::uint8_t* writeIntoTen(Element element, std::uint8_t* out) {
  const auto value = static_cast<std::uint64_t>(static_cast<std::uint16_t>(element));
  const std::size_t length = 1U + (value >= 0x80) + (value >= 0x4000);
  std::uint64_t bytes = (value & 0x7F) | (value & 0x3F80) << 1 | (value & 0xC000) << 2;
  if constexpr (std::is_signed_v<Element>) {
    // Sign-extended to 64 bits: seven bytes and the rest of the third are constant.
    const std::uint64_t negative = -(value >> 15);
    storeLittleEndian(bytes | continued[length] | (negative & 0xFFFFFFFFFFFC8080U), out);
    out[8] = 0xFF;
    out[9] = 0x01;
    return out + length + (negative & (kLongestVarint - 3));
  } else {
    storeLittleEndian(bytes | continued[length], out);
    return out + length;
  }
}

// Writes elements where there is room for ten bytes behind them.
template <class Element, std::size_t size>
std::uint8_t* writeGroup(std::span<const Element, size> elements, std::uint8_t* out) {
  std::make_unsigned_t<Element> bits = 0;
  for (const Element element : elements)
    bits |= static_cast<std::make_unsigned_t<Element>>(element);
  if (bits < 0x80) {
    const auto byteOf = [](Element element) { return static_cast<std::uint8_t>(element); };
    return std::ranges::transform(elements, out, byteOf).out;
  }
  for (const Element element : elements) out = writeIntoTen(element, out);
  return out;
}

// The same of text: what is ASCII up to the next other unit is written eight at a time.
std::uint8_t* writeGroup(std::span<const char16_t, kUnits> units, std::uint8_t* out) {
  std::uint64_t ascii = asciiUnits(units.data());
  if (ascii == UINT64_MAX) {
    for (std::size_t i = 0; i < kUnits; i += kRun) narrowRun(units.data() + i, out + i);
    return out + kUnits;
  }
  for (std::size_t i = 0;;) {
    const std::size_t run = runLength(ascii);
    narrowRun(units.data() + i, out);
    out += run;
    i += run;
    if (i == kUnits) return out;
    out = writeIntoTen(units[i++], out);
    if (i == kUnits) return out;
    ascii = ascii >> run >> 1;
  }
}

}  // namespace

template <class Element>
std::size_t packedSize(std::span<const Element> elements) {
  std::size_t size = 0;
  for (const Element element : elements) size += varintSizeOf(element);
  return size;
}

template <class Element>
std::uint8_t* writePacked(std::span<const Element> elements, std::uint8_t* out) {
  // Each of those that follow takes a byte at least.
  constexpr std::size_t group = std::is_same_v<Element, char16_t> ? kUnits : 8;
  for (; elements.size() >= group + kLongestVarint; elements = elements.subspan(group)) {
    out = writeGroup(elements.template first<group>(), out);
  }
  for (const Element element : elements) {
    // Sign-extended, as int32 values are.
    out = writeVarint(static_cast<std::uint64_t>(static_cast<std::int64_t>(element)), out);
  }
  return out;
}

template std::size_t packedSize(std::span<const std::uint16_t>);
template std::size_t packedSize(std::span<const std::int16_t>);
template std::size_t packedSize(std::span<const char16_t>);
template std::size_t packedSize(std::span<const std::uint64_t>);
template std::size_t packedSize(std::span<const std::int64_t>);
template std::uint8_t* writePacked(std::span<const std::uint16_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const std::int16_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const char16_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const std::uint64_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const std::int64_t>, std::uint8_t*);

}  // namespace hcy
