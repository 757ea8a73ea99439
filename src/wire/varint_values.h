// SPDX-License-Identifier: Apache-2.0
//
// The values of varints. Their bytes are collected first; the values are then computed together, in
// a loop that compilers vectorize.

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "wire/varint.h"
#include "wire/varint_ends.h"

namespace hcy {

template <class Element>
Element elementOf(std::uint64_t varint) {
  if constexpr (std::is_same_v<Element, bool>) {
    return varint != 0;
  } else {
    return static_cast<Element>(varint);
  }
}

// The seven low bits of each byte, side by side; the highest bits are clear. Subtracting half of
// some bits moves them by one.
constexpr std::uint64_t joined(std::uint64_t bytes) {
  bytes -= (bytes & 0x7F007F007F007F00U) >> 1;
  bytes = (bytes & 0x00003FFF00003FFFU) | (bytes & 0x3FFF00003FFF0000U) >> 2;
  return (bytes & 0x000000000FFFFFFFU) | (bytes & 0x0FFFFFFF00000000U) >> 4;
}

// The same for the first three bytes, cut to 16 bits.
constexpr std::uint32_t joinedThree(std::uint32_t bytes) {
  return (bytes & 0x7F) | (bytes >> 1 & 0x3F80) | (bytes >> 2 & 0xC000);
}

// Clears the bytes behind the varint that begins with the lowest byte. It ends with the first byte
// whose highest bit is not set.
constexpr std::uint32_t ownBytes(std::uint32_t bytes) {
  const std::uint32_t ends = ~bytes & 0x80808080U;
  return bytes & (ends ^ (ends - 1));
}

// For each length of a varint, the bits that belong to its value: in its first eight bytes, and in
// the next two.
struct ValueBits {
  std::uint64_t first[kLongestVarint + 1];
  std::uint64_t last[kLongestVarint + 1];
};
inline constexpr ValueBits kValueBits = {
    {0, 0x7F, 0x7F7F, 0x7F7F7F, 0x7F7F7F7F, 0x7F7F7F7F7F, 0x7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F,
     0x7F7F7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F7F},
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0x7F, 0x17F}};

template <class Element>
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): only what was added is read
class VarintValues {
 public:
  static constexpr std::size_t kRoom = 2 * kBlock;

  std::size_t size() const { return size_; }
  bool hasRoom() const { return size_ <= kRoom - kBlock; }

  // Adds the `count` varints that end in a block. The first begins at `varint`, in the block or
  // before it. No varint is longer than ten bytes, nor is the rest of the block after the last
  // one. Ten bytes can be read behind the block.
  void add(const std::uint8_t* varint, const std::uint8_t* block, std::uint64_t ends,
           std::size_t count) {
    std::size_t i = size_;
    const auto addNext = [&] {
      // If no varint is left, adds the rest of the block, which may be empty.
      const auto end = static_cast<std::size_t>(std::countr_zero(ends | std::uint64_t{1} << 63));
      const std::uint8_t* const next = block + end + 1;
      put(varint, static_cast<std::size_t>(next - varint), i++);
      varint = next;
      ends &= ends - 1;
    };
    for (std::size_t usual = 0; usual < kUsual; ++usual) addNext();
    size_ += count;
    while (i < size_) addNext();
  }

  // Writes the elements and returns their end. No values are left.
  Element* writeTo(Element* elements) {
    for (std::size_t i = 0; i < size_; ++i) {
      if constexpr (isNarrow) {
        elements[i] = static_cast<Element>(joinedThree(ownBytes(firstBytes_[i])));
      } else {
        elements[i] = elementOf<Element>(joined(firstBytes_[i]) | lastBytes_[i] << 56 |
                                         lastBytes_[i] >> 8 << 63);
      }
    }
    elements += size_;
    size_ = 0;
    return elements;
  }

 private:
  static constexpr bool isNarrow = sizeof(Element) == 2;
  using Word = std::conditional_t<isNarrow, std::uint32_t, std::uint64_t>;

  // How many values are always added, in a loop whose end a processor predicts well. If fewer
  // varints end in the block, the values in excess are overwritten or never read.
  static constexpr std::size_t kUsual = isNarrow ? 12 : 10;
  static_assert(kUsual <= kBlock);

  void put(const std::uint8_t* varint, std::size_t length, std::size_t i) {
    if constexpr (isNarrow) {
      firstBytes_[i] = loadLittleEndian<Word>(varint);
    } else {
      firstBytes_[i] = loadLittleEndian<Word>(varint) & kValueBits.first[length];
      const auto last = static_cast<std::uint64_t>(varint[8] | varint[9] << 8);
      lastBytes_[i] = last & kValueBits.last[length];
    }
  }

  std::array<Word, kRoom> firstBytes_;
  std::array<std::uint64_t, isNarrow ? 0 : kRoom> lastBytes_;
  std::size_t size_ = 0;
};

}  // namespace hcy
