// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <type_traits>

#include "wire/ascii_runs.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/varint_ends.h"

namespace hcy {
namespace {

using google::protobuf::RepeatedField;

template <class Element>
Element elementOf(std::uint64_t varint) {
  if constexpr (std::is_same_v<Element, bool>) {
    return varint != 0;
  } else {
    return static_cast<Element>(varint);
  }
}

// The low 16 bits of a varint of `length` bytes, of which three can be read.
inline std::uint16_t lowBitsOf(const std::uint8_t* varint, std::size_t length) {
  static constexpr std::uint32_t masks[kLongestVarint + 1] = {
      0, 0x7F, 0x3FFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
  const std::uint32_t bits =
      (varint[0] & 0x7FU) | (varint[1] & 0x7FU) << 7 | static_cast<std::uint32_t>(varint[2]) << 14;
  return static_cast<std::uint16_t>(bits & masks[length]);
}

// The seven low bits of each byte, side by side.
constexpr std::uint64_t joined(std::uint64_t bytes) {
  bytes = (bytes & 0x007F007F007F007FU) | (bytes & 0x7F007F007F007F00U) >> 1;
  bytes = (bytes & 0x00003FFF00003FFFU) | (bytes & 0x3FFF00003FFF0000U) >> 2;
  return (bytes & 0x000000000FFFFFFFU) | (bytes & 0x0FFFFFFF00000000U) >> 4;
}

// The value of a varint of `length` bytes, of which ten can be read.
inline std::uint64_t valueOf(const std::uint8_t* varint, std::size_t length) {
  static constexpr struct {
    std::uint64_t first, ninth, tenth;
  } masks[kLongestVarint + 1] = {{0, 0, 0},
                                 {0x7F, 0, 0},
                                 {0x3FFF, 0, 0},
                                 {0x1FFFFF, 0, 0},
                                 {0xFFFFFFF, 0, 0},
                                 {0x7FFFFFFFF, 0, 0},
                                 {0x3FFFFFFFFFF, 0, 0},
                                 {0x1FFFFFFFFFFFF, 0, 0},
                                 {0xFFFFFFFFFFFFFF, 0, 0},
                                 {0xFFFFFFFFFFFFFF, 0x7F, 0},
                                 {0xFFFFFFFFFFFFFF, 0x7F, 1}};
  const auto& mask = masks[length];
  return (joined(loadLittleEndian(varint)) & mask.first) | (varint[8] & mask.ninth) << 56 |
         (varint[9] & mask.tenth) << 63;
}

// Reads varints block by block, without a branch for each of their lengths.
template <class Element>
class BlockReader {
 public:
  // There is room for one element for each byte that ends a varint.
  BlockReader(Bytes packed, Element* elements, std::size_t room)
      : position_(packed.data()),
        end_(position_ + packed.size()),
        elements_(elements),
        elementsEnd_(elements + room) {}

  // Up to a block and a varint are left over. False if what was read is broken.
  bool read() {
    for (const std::uint8_t* block = position_;
         end_ - block >= std::ptrdiff_t{kBlock + kLongestVarint}; block += kBlock) {
      const std::uint64_t ends = varintEnds(block);
      if (ends == UINT64_MAX && position_ == block) {
        elements_ = std::transform(block, block + kBlock, elements_, elementOf<Element>);
        position_ += kBlock;
      } else if (hasRuns(ends) ? !readRuns(block, ends) : !readEach(block, ends)) {
        return false;
      }
    }
    return true;
  }

  const std::uint8_t* position() const { return position_; }
  Element* elements() const { return elements_; }

 private:
  // Whether most varints are of one byte, and eight elements can be written wherever one is due.
  bool hasRuns(std::uint64_t ends) const {
    return sizeof(Element) == 2 && std::popcount(ends) > 40 &&
           elementsEnd_ - elements_ >= std::ptrdiff_t{kBlock + kRun};
  }

  bool readEach(const std::uint8_t* block, std::uint64_t ends) {
    for (; ends != 0; ends &= ends - 1) {
      if (!readOne(block + std::countr_zero(ends) + 1)) return false;
    }
    return true;
  }

  // Any varint, and those of one byte that follow it.
  bool readRuns(const std::uint8_t* block, std::uint64_t ends) {
    while (ends != 0) {
      if (!readOne(block + std::countr_zero(ends) + 1)) return false;
      ends &= ends - 1;
      if (ends == 0) break;
      const auto offset = position_ - block;
      const std::uint64_t following = ends >> offset;
      const std::size_t run = runLength(following);
      widenRun(position_, elements_);
      elements_ += run;
      position_ += run;
      ends = following >> run << run << offset;
    }
    return true;
  }

  bool readOne(const std::uint8_t* next) {
    const auto length = static_cast<std::size_t>(next - position_);
    if (length > kLongestVarint) return false;
    if constexpr (sizeof(Element) == 2) {
      *elements_++ = static_cast<Element>(lowBitsOf(position_, length));
    } else {
      *elements_++ = elementOf<Element>(valueOf(position_, length));
    }
    position_ = next;
    return true;
  }

  const std::uint8_t* position_;
  const std::uint8_t* end_;
  Element* elements_;
  Element* elementsEnd_;
};

// Reads packed varints, and moves `elements` past the last one; false if they are broken. There
// is room for one element for each byte that ends a varint.
template <class Element>
bool readAll(Bytes packed, Element*& elements, std::size_t room) {
  BlockReader<Element> blocks(packed, elements, room);
  const bool isWhole = blocks.read();
  elements = blocks.elements();
  if (!isWhole) return false;
  const std::uint8_t* position = blocks.position();
  const std::uint8_t* const end = packed.data() + packed.size();
  while (position != end) {
    const std::uint64_t varint = readVarint(position, end);
    if (position == nullptr) return false;
    *elements++ = elementOf<Element>(varint);
  }
  return true;
}

}  // namespace

// In 32 bits, which hold the number of any body's bytes and are quick to add up.
std::size_t countVarints(Bytes packed) {
  std::uint32_t count = 0;
  for (const std::uint8_t byte : packed) count += byte < 0x80;
  return count;
}

template <class Element>
bool readPacked(Bytes packed, RepeatedField<Element>& list) {
  const std::size_t count = countVarints(packed);
  const int size = list.size();
  list.Reserve(size + static_cast<int>(count));
  Element* const begin = list.AddNAlreadyReserved(static_cast<int>(count));
  Element* elements = begin;
  const bool isWhole = readAll(packed, elements, count);
  list.Truncate(size + static_cast<int>(elements - begin));
  return isWhole;
}

template <class Element>
bool readPacked(Bytes packed, ElementBuffer& buffer) {
  const std::size_t size = buffer.size();
  const std::size_t count = countVarints(packed);
  auto* const begin = reinterpret_cast<Element*>(buffer.extend(count * sizeof(Element)));
  Element* elements = begin;
  const bool isWhole = readAll(packed, elements, count);
  buffer.truncate(size + static_cast<std::size_t>(elements - begin) * sizeof(Element));
  return isWhole;
}

template bool readPacked(Bytes, RepeatedField<std::uint32_t>&);
template bool readPacked(Bytes, RepeatedField<std::int32_t>&);
template bool readPacked(Bytes, RepeatedField<std::uint64_t>&);
template bool readPacked(Bytes, RepeatedField<std::int64_t>&);
template bool readPacked(Bytes, RepeatedField<bool>&);
template bool readPacked<std::uint16_t>(Bytes, ElementBuffer&);
template bool readPacked<std::int16_t>(Bytes, ElementBuffer&);
template bool readPacked<char16_t>(Bytes, ElementBuffer&);
template bool readPacked<std::uint64_t>(Bytes, ElementBuffer&);
template bool readPacked<std::int64_t>(Bytes, ElementBuffer&);
template bool readPacked<bool>(Bytes, ElementBuffer&);

}  // namespace hcy
