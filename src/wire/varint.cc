// SPDX-License-Identifier: Apache-2.0

#include "wire/varint.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace hcy {
namespace {

using google::protobuf::RepeatedField;

constexpr std::uint64_t kContinued = 0x8080808080808080U;

// The low 32 bits of a varint where ten bytes can be read, of which these are the first eight;
// without a branch for each length, since these follow one another at random.
inline std::uint32_t readVarintOfTen(std::uint64_t eight, const std::uint8_t*& position,
                                     const std::uint8_t* end) {
  static constexpr std::uint32_t masks[] = {0,   0x7F, 0x3FFF, 0x1FFFFF, 0xFFFFFFF, ~0U,
                                            ~0U, ~0U,  ~0U,    ~0U,      ~0U};
  const std::uint64_t last = ~eight & kContinued;
  const bool isLong = last == 0;
  // Negative numbers take ten bytes; nine are rare.
  if (isLong & ((position[8] < 0x80) | (position[9] >= 0x80))) {
    return static_cast<std::uint32_t>(readVarint(position, end));
  }
  const int length = isLong ? 10 : std::countr_zero(last) / 8 + 1;
  position += length;
  const auto bits = [eight](int byte) {
    return static_cast<std::uint32_t>(eight >> byte & std::uint64_t{0x7F} << 7 * byte);
  };
  return (bits(0) | bits(1) | bits(2) | bits(3) | bits(4)) & masks[length];
}

template <class Element>
Element elementOf(std::uint64_t varint) {
  if constexpr (std::is_same_v<Element, bool>) {
    return varint != 0;
  } else {
    return static_cast<Element>(varint);
  }
}

// Reads packed varints, and returns their number; up to ten bytes are left over. `position` becomes
// null if they are broken. There is room for one element for each byte that ends a varint.
template <class Element>
std::size_t readVarints(const std::uint8_t*& position, const std::uint8_t* end, Element* elements) {
  static_assert(std::endian::native == std::endian::little);
  std::size_t read = 0;
  while (position != nullptr && end - position >= 10) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, position, sizeof eight);
    if ((eight & kContinued) == 0) {
      std::transform(position, position + 8, elements + read, elementOf<Element>);
      position += 8;
      read += 8;
      continue;
    }
    Element element;
    if constexpr (sizeof(Element) > 4 || std::is_same_v<Element, bool>) {
      element = elementOf<Element>(readVarint(position, end));
    } else {
      element = static_cast<Element>(readVarintOfTen(eight, position, end));
    }
    if (position != nullptr) elements[read++] = element;
  }
  return read;
}

template <class Element>
std::size_t varintSizeOf(Element element) {
  if constexpr (std::is_signed_v<Element>) {
    if (element < 0) return 10;
  }
  const auto value = static_cast<std::uint16_t>(element);
  return 1U + (value >= 0x80) + (value >= 0x4000);
}

// Reads packed varints, and moves `elements` behind the last one; false if they are broken. There
// is room for one element for each byte that ends a varint.
template <class Element>
bool readAll(Bytes packed, Element*& elements) {
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  elements += readVarints(position, end, elements);
  while (position != nullptr && position != end) {
    const std::uint64_t varint = readVarint(position, end);
    if (position != nullptr) *elements++ = elementOf<Element>(varint);
  }
  return position != nullptr;
}

std::size_t countVarints(Bytes packed) {
  return static_cast<std::size_t>(
      std::ranges::count_if(packed, [](std::uint8_t byte) { return byte < 0x80; }));
}

}  // namespace

template <class Element>
bool readPacked(Bytes packed, RepeatedField<Element>& list) {
  const std::size_t count = countVarints(packed);
  const int size = list.size();
  list.Reserve(size + static_cast<int>(count));
  Element* const begin = list.AddNAlreadyReserved(static_cast<int>(count));
  Element* elements = begin;
  const bool isWhole = readAll(packed, elements);
  list.Truncate(size + static_cast<int>(elements - begin));
  return isWhole;
}

template <class Element>
bool readPacked(Bytes packed, std::vector<Element>& list) {
  const std::size_t count = countVarints(packed);
  const std::size_t size = list.size();
  list.resize(size + count);
  Element* elements = list.data() + size;
  const bool isWhole = readAll(packed, elements);
  list.resize(static_cast<std::size_t>(elements - list.data()));
  return isWhole;
}

template <class Element>
std::size_t packedSize(std::span<const Element> elements) {
  std::size_t size = 0;
  for (const Element element : elements) size += varintSizeOf(element);
  return size;
}

template <class Element>
std::uint8_t* writePacked(std::span<const Element> elements, std::uint8_t* out) {
  for (const Element element : elements) {
    // Sign-extended, as int32 values are.
    out = writeVarint(static_cast<std::uint64_t>(static_cast<std::int64_t>(element)), out);
  }
  return out;
}

template bool readPacked(Bytes, RepeatedField<std::uint32_t>&);
template bool readPacked(Bytes, RepeatedField<std::int32_t>&);
template bool readPacked(Bytes, RepeatedField<std::uint64_t>&);
template bool readPacked(Bytes, RepeatedField<std::int64_t>&);
template bool readPacked(Bytes, RepeatedField<bool>&);
template bool readPacked(Bytes, std::vector<std::uint16_t>&);
template bool readPacked(Bytes, std::vector<std::int16_t>&);
template bool readPacked(Bytes, std::vector<char16_t>&);
template std::size_t packedSize(std::span<const std::uint16_t>);
template std::size_t packedSize(std::span<const std::int16_t>);
template std::size_t packedSize(std::span<const char16_t>);
template std::uint8_t* writePacked(std::span<const std::uint16_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const std::int16_t>, std::uint8_t*);
template std::uint8_t* writePacked(std::span<const char16_t>, std::uint8_t*);

}  // namespace hcy
