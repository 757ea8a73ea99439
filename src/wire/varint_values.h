// SPDX-License-Identifier: Apache-2.0
//
// The values of varints that were found one after another. They are computed together, in loops
// that compilers make vector code of.

#pragma once

#include <array>
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

// The seven low bits of each byte, side by side.
constexpr std::uint64_t joined(std::uint64_t bytes) {
  bytes = (bytes & 0x007F007F007F007FU) | (bytes & 0x7F007F007F007F00U) >> 1;
  bytes = (bytes & 0x00003FFF00003FFFU) | (bytes & 0x3FFF00003FFF0000U) >> 2;
  return (bytes & 0x000000000FFFFFFFU) | (bytes & 0x0FFFFFFF00000000U) >> 4;
}

// The same of three bytes, as far as they fit into 16 bits.
constexpr std::uint32_t joinedThree(std::uint32_t bytes) {
  return (bytes & 0x7F) | (bytes >> 1 & 0x3F80) | (bytes >> 2 & 0xC000);
}

// The bits of a varint of each length that belong to its value: of its first eight bytes, and of
// the next two.
struct ValueBits {
  std::uint64_t first[kLongestVarint + 1];
  std::uint64_t last[kLongestVarint + 1];
};
inline constexpr ValueBits kValueBits = {
    {0, 0x7F, 0x7F7F, 0x7F7F7F, 0x7F7F7F7F, 0x7F7F7F7F7F, 0x7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F,
     0x7F7F7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F7F, 0x7F7F7F7F7F7F7F7F},
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0x7F, 0x17F}};

// Of a varint of which eight bytes can be read.
inline std::uint32_t firstThree(const std::uint8_t* varint, std::size_t length) {
  return static_cast<std::uint32_t>(loadLittleEndian(varint) & kValueBits.first[length]);
}

template <class Element>
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): only what was added is read
class VarintValues {
 public:
  static constexpr std::size_t kRoom = 128;

  std::size_t room() const { return kRoom - size_; }

  // A varint of at most ten bytes; ten can be read.
  void add(const std::uint8_t* varint, std::size_t length) {
    if constexpr (isNarrow) {
      firstBytes_[size_] = firstThree(varint, length);
    } else {
      firstBytes_[size_] = loadLittleEndian(varint) & kValueBits.first[length];
      const auto last = static_cast<std::uint64_t>(varint[8] | varint[9] << 8);
      lastBytes_[size_] = last & kValueBits.last[length];
    }
    ++size_;
  }

  // Writes the elements, returns their end, and is empty then.
  Element* writeTo(Element* elements) {
    for (std::size_t i = 0; i < size_; ++i) {
      if constexpr (isNarrow) {
        elements[i] = static_cast<Element>(joinedThree(firstBytes_[i]));
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

  std::array<Word, kRoom> firstBytes_;
  std::array<std::uint64_t, isNarrow ? 0 : kRoom> lastBytes_;
  std::size_t size_ = 0;
};

}  // namespace hcy
