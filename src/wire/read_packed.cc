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

// Whether no varint that reaches into a block is longer than ten bytes. The first begins at
// `varint`, in the block or before it.
bool areShort(const std::uint8_t* varint, const std::uint8_t* block, std::uint64_t ends) {
  const std::uint64_t continued = ~ends;
  // A bit remains if it and the nine above it are set.
  std::uint64_t runs = continued & continued >> 1;
  runs &= runs >> 2;
  runs &= runs >> 4;
  static_assert(kLongestVarint == 10);
  runs &= continued >> 8 & continued >> 9;
  const auto before = static_cast<std::size_t>(block - varint);
  return runs == 0 && before + static_cast<std::size_t>(std::countr_zero(ends)) < kLongestVarint;
}

// Reads varints block by block, without a branch for each of their lengths.
template <class Element>
class BlockReader {
 public:
  BlockReader(Bytes packed, Element* elements, std::size_t room)
      : position_(packed.data()),
        end_(position_ + packed.size()),
        elements_(elements),
        elementsEnd_(elements + room) {}

  // Reads the varints that end in whole blocks. Stops before a block that has a varint of more than
  // ten bytes or more varints than there is room for, or that is not followed by ten bytes: so many
  // are loaded wherever a varint begins.
  void read() {
    for (const std::uint8_t* block = position_;
         end_ - block >= std::ptrdiff_t{kBlock + kLongestVarint}; block += kBlock) {
      const std::uint64_t ends = varintEnds(block);
      const std::size_t count = countBits(ends);
      if (count > room() || !areShort(position_, block, ends)) break;
      if (count == kBlock && position_ == block) {
        writeValues();
        elements_ = std::transform(block, block + kBlock, elements_, elementOf<Element>);
      } else if (hasRuns(ends)) {
        readRuns(block, ends);
      } else {
        if (!values_.hasRoom()) writeValues();
        values_.add(position_, block, ends, count);
      }
      position_ = block + kBlock - static_cast<std::size_t>(std::countl_zero(ends));
    }
    writeValues();
  }

  const std::uint8_t* position() const { return position_; }
  Element* elements() const { return elements_; }

 private:
  std::size_t room() const {
    return static_cast<std::size_t>(elementsEnd_ - elements_) - values_.size();
  }

  void writeValues() { elements_ = values_.writeTo(elements_); }

  // Whether eight bytes in a row end a varint, and there is room for readRuns(), which writes eight
  // elements at a time, even after the last one.
  bool hasRuns(std::uint64_t ends) const {
    static_assert(kRun == 8);
    ends &= ends >> 1;
    ends &= ends >> 2;
    ends &= ends >> 4;
    return sizeof(Element) == 2 && ends != 0 && room() >= kBlock + kRun;
  }

  // Reads the varints that end in the block: one of any length and the run of one-byte varints that
  // follows it, again and again.
  void readRuns(const std::uint8_t* block, std::uint64_t ends) {
    writeValues();
    const std::uint8_t* position = position_;
    while (ends != 0) {
      *elements_++ =
          static_cast<Element>(joinedThree(ownBytes(loadLittleEndian<std::uint32_t>(position))));
      position = block + 1 + static_cast<std::size_t>(std::countr_zero(ends));
      ends &= ends - 1;
      if (ends == 0) break;
      const auto offset = position - block;
      const std::uint64_t following = ends >> offset;
      const std::size_t run = runLength(following);
      widenRun(position, elements_);
      elements_ += run;
      position += run;
      ends = following >> run << run << offset;
    }
  }

  const std::uint8_t* position_;
  const std::uint8_t* end_;
  Element* elements_;
  Element* elementsEnd_;
  VarintValues<Element> values_;
};

// Reads packed varints until none is left or there is no more room for elements. Moves `packed` and
// `elements` past the last one; false if the next is broken.
template <class Element>
bool readAll(Bytes& packed, Element*& elements, std::size_t room) {
  Element* const elementsEnd = elements + room;
  BlockReader<Element> blocks(packed, elements, room);
  blocks.read();
  elements = blocks.elements();
  const std::uint8_t* position = blocks.position();
  const std::uint8_t* const end = packed.data() + packed.size();
  while (position != end && elements != elementsEnd) {
    const std::uint64_t varint = readVarint(position, end);
    if (position == nullptr) return false;
    *elements++ = elementOf<Element>(varint);
  }
  packed = {position, end};
  return true;
}

}  // namespace

// A field has fewer than 2^31 bytes, and compilers add up 32-bit numbers faster than 64-bit ones.
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
  return isWhole && packed.empty();
}

template <class Element>
bool readPacked(Bytes packed, ElementBuffer& buffer, std::uint64_t expected) {
  // Each element takes at least one byte: a larger number is wrong.
  std::size_t room = expected <= packed.size() ? expected : 0;
  if (room == 0) room = countVarints(packed);
  while (room != 0) {
    const std::size_t size = buffer.size();
    auto* const begin = reinterpret_cast<Element*>(buffer.extend(room * sizeof(Element)));
    Element* elements = begin;
    const bool isWhole = readAll(packed, elements, room);
    buffer.truncate(size + static_cast<std::size_t>(elements - begin) * sizeof(Element));
    if (!isWhole) return false;
    // There may be more than were expected.
    room = countVarints(packed);
  }
  return packed.empty();
}

template bool readPacked(Bytes, RepeatedField<std::uint32_t>&);
template bool readPacked(Bytes, RepeatedField<std::int32_t>&);
template bool readPacked(Bytes, RepeatedField<std::uint64_t>&);
template bool readPacked(Bytes, RepeatedField<std::int64_t>&);
template bool readPacked(Bytes, RepeatedField<bool>&);
template bool readPacked<std::uint16_t>(Bytes, ElementBuffer&, std::uint64_t);
template bool readPacked<std::int16_t>(Bytes, ElementBuffer&, std::uint64_t);
template bool readPacked<char16_t>(Bytes, ElementBuffer&, std::uint64_t);
template bool readPacked<std::uint64_t>(Bytes, ElementBuffer&, std::uint64_t);
template bool readPacked<std::int64_t>(Bytes, ElementBuffer&, std::uint64_t);
template bool readPacked<bool>(Bytes, ElementBuffer&, std::uint64_t);

}  // namespace hcy
