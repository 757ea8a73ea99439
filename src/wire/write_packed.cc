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

// Groups of seven bits, each in a byte. Adding bits to themselves moves them by one.
constexpr std::uint64_t spread(std::uint64_t bits) {
  bits = (bits & 0x000000000FFFFFFFU) | (bits & 0x00FFFFFFF0000000U) << 4;
  bits = (bits & 0x00003FFF00003FFFU) | (bits & 0x0FFFC0000FFFC000U) << 2;
  return bits + (bits & 0x3F803F803F803F80U);
}

// Whether a number of 16 bits takes a second and a third byte: 0 or 1. Without a comparison, so
// that compilers vectorize it.
constexpr std::uint32_t hasSecond(std::uint32_t value) { return (value + 0x7FFFFF80U) >> 31; }
constexpr std::uint32_t hasThird(std::uint32_t value) { return (value + 0x7FFFC000U) >> 31; }

// The first three bytes of such a number.
constexpr std::uint32_t spreadThree(std::uint32_t value) {
  return (value & 0x7F) | (value & 0x3F80) << 1 | (value & 0xC000) << 2 | hasSecond(value) << 7 |
         hasThird(value) << 15;
}

// Writes a unit where there is room for eight bytes.
std::uint8_t* writeUnit(char16_t unit, std::uint8_t* out) {
  storeLittleEndian(spreadThree(unit), out);
  return out + 1 + hasSecond(unit) + hasThird(unit);
}

// Elements are written where there is room for ten bytes behind them. Their lengths follow one
// another at random, so there is no branch for each. The bytes of all are computed first, in a loop
// that compilers vectorize.

template <class Element, std::size_t size>
requires(sizeof(Element) == 8) std::uint8_t* writeEach(std::span<const Element, size> elements,
                                                       std::uint8_t* out) {
  std::uint64_t first[size];
  std::uint64_t last[size];
  for (std::size_t i = 0; i < size; ++i) {
    const auto value = static_cast<std::uint64_t>(elements[i]);
    first[i] = spread(value);
    last[i] = (value >> 56 & 0x7F) | value >> 63 << 7;
  }
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t length = varintSize(static_cast<std::uint64_t>(elements[i]));
    storeLittleEndian(first[i] | continued[length], out);
    out[8] = static_cast<std::uint8_t>(last[i]);
    out[9] = 1;
    out += length;
  }
  return out;
}

template <class Element, std::size_t size>
requires(sizeof(Element) == 2) std::uint8_t* writeEach(std::span<const Element, size> elements,
                                                       std::uint8_t* out) {
  std::uint32_t first[size];
  std::uint32_t lengths[size];
  for (std::size_t i = 0; i < size; ++i) {
    // Sign-extended to 64 bits: of a negative number, seven bytes and the rest of the third are
    // constant.
    const auto value = static_cast<std::uint32_t>(static_cast<std::uint16_t>(elements[i]));
    const auto negative = static_cast<std::uint32_t>(std::int32_t{elements[i]} >> 31);
    first[i] = spreadThree(value) | (negative & 0xFFFC8080U);
    lengths[i] = 1 + hasSecond(value) + hasThird(value) + (negative & (kLongestVarint - 3));
  }
  for (std::size_t i = 0; i < size; ++i) {
    const auto bytes = static_cast<std::int32_t>(first[i]);
    storeLittleEndian(static_cast<std::uint64_t>(std::int64_t{bytes}), out);
    out[8] = 0xFF;
    out[9] = 0x01;
    out += lengths[i];
  }
  return out;
}

template <class Element, std::size_t size>
std::uint8_t* writeGroup(std::span<const Element, size> elements, std::uint8_t* out) {
  std::make_unsigned_t<Element> bits = 0;
  for (const Element element : elements)
    bits |= static_cast<std::make_unsigned_t<Element>>(element);
  if (bits < 0x80) {
    const auto byteOf = [](Element element) { return static_cast<std::uint8_t>(element); };
    return std::ranges::transform(elements, out, byteOf).out;
  }
  return writeEach(elements, out);
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
    out = writeUnit(units[i++], out);
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
  constexpr std::size_t group = std::is_same_v<Element, char16_t> ? kUnits : 16;
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
