// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <bit>
#include <type_traits>

#include "wire/ascii_runs.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/varint_ends.h"
#include "wire/varint_values.h"

namespace hcy {
namespace {

using google::protobuf::RepeatedField;

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
    const bool isWhole = readBlocks();
    writeValues();
    return isWhole;
  }

  const std::uint8_t* position() const { return position_; }
  Element* elements() const { return elements_; }

 private:
  bool readBlocks() {
    for (const std::uint8_t* block = position_;
         end_ - block >= std::ptrdiff_t{kBlock + kLongestVarint}; block += kBlock) {
      const std::uint64_t ends = varintEnds(block);
      if (ends == UINT64_MAX && position_ == block) {
        writeValues();
        elements_ = std::transform(block, block + kBlock, elements_, elementOf<Element>);
        position_ += kBlock;
      } else if (hasRuns(ends) ? !readRuns(block, ends) : !readEach(block, ends)) {
        return false;
      }
    }
    return true;
  }

  void writeValues() { elements_ = values_.writeTo(elements_); }

  // Whether a run of eight varints of one byte is in the block, and eight elements can be written
  // wherever one is due, behind the values that are still to be written.
  bool hasRuns(std::uint64_t ends) const {
    static_assert(kRun == 8);
    ends &= ends >> 1;
    ends &= ends >> 2;
    ends &= ends >> 4;
    constexpr std::size_t least = kBlock + kRun + VarintValues<Element>::kRoom;
    return sizeof(Element) == 2 && ends != 0 &&
           elementsEnd_ - elements_ >= static_cast<std::ptrdiff_t>(least);
  }

  // Any varint, and those of one byte that follow it.
  bool readRuns(const std::uint8_t* block, std::uint64_t ends) {
    writeValues();
    while (ends != 0) {
      const std::uint8_t* const next = block + 1 + static_cast<std::size_t>(std::countr_zero(ends));
      const auto length = static_cast<std::size_t>(next - position_);
      if (length > kLongestVarint) return false;
      *elements_++ = static_cast<Element>(joinedThree(firstThree(position_, length)));
      position_ = next;
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

  bool readEach(const std::uint8_t* block, std::uint64_t ends) {
    if (values_.room() < kBlock) writeValues();
    for (; ends != 0; ends &= ends - 1) {
      const std::uint8_t* const next = block + 1 + static_cast<std::size_t>(std::countr_zero(ends));
      const auto length = static_cast<std::size_t>(next - position_);
      if (length > kLongestVarint) return false;
      values_.add(position_, length);
      position_ = next;
    }
    return true;
  }

  const std::uint8_t* position_;
  const std::uint8_t* end_;
  Element* elements_;
  Element* elementsEnd_;
  VarintValues<Element> values_;
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
