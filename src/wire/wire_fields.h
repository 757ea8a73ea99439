// SPDX-License-Identifier: Apache-2.0
//
// The fields of a message in wire form, one by one.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "wire/bytes.h"
#include "wire/varint.h"

namespace hcy {

constexpr std::uint32_t lengthDelimitedTag(int number) {
  return static_cast<std::uint32_t>(number) << 3 | 2;
}

struct WireField {
  std::uint32_t tag;
  std::uint64_t value;  // of a varint
  Bytes content;        // of a field of a fixed or given length, as far as it arrived
  std::size_t begin;    // where the field lies, tag and length included
  std::size_t end;
  bool isWhole;  // false if the message ends inside the content

  int number() const { return static_cast<int>(tag >> 3); }
  // Whether it is the length-delimited field of this number.
  bool is(int fieldNumber) const { return tag == lengthDelimitedTag(fieldNumber); }
  bool isVarint(int fieldNumber) const {
    return tag == static_cast<std::uint32_t>(fieldNumber) << 3;
  }
  bool isFixed64(int fieldNumber) const {
    return tag == (static_cast<std::uint32_t>(fieldNumber) << 3 | 1);
  }
  bool isFixed32(int fieldNumber) const {
    return tag == (static_cast<std::uint32_t>(fieldNumber) << 3 | 5);
  }
  bool isLengthDelimited() const { return (tag & 7) == 2; }
};

// Where the group ends whose fields begin at `position`; 0 if it is broken.
std::size_t endOfGroup(Bytes message, std::size_t position, std::uint32_t tag);

// The field at `begin`; false if it is broken. Content that is cut does not count as broken.
inline bool readField(Bytes message, std::size_t begin, WireField& field) {
  const std::uint8_t* const bytes = message.data();
  const std::uint8_t* position = bytes + begin;
  const std::uint8_t* const end = bytes + message.size();
  field = {static_cast<std::uint32_t>(readVarint(position, end)), 0, {}, begin, 0, true};
  if (position == nullptr || field.tag == 0) return false;
  std::uint64_t length = 0;
  switch (field.tag & 7) {
    case 0:
      field.value = readVarint(position, end);
      break;
    case 1:
      length = 8;
      break;
    case 2:
      length = readVarint(position, end);
      if (length > std::numeric_limits<std::int32_t>::max()) return false;
      break;
    case 3:
      field.end = endOfGroup(message, static_cast<std::size_t>(position - bytes), field.tag);
      return field.end != 0;
    case 5:
      length = 4;
      break;
    default:
      return false;
  }
  if (position == nullptr) return false;
  const auto left = static_cast<std::size_t>(end - position);
  field.isWhole = length <= left;
  // Only what has a length of its own can be there in part.
  if (!field.isWhole && !field.isLengthDelimited()) return false;
  field.content = {position, std::min<std::size_t>(left, length)};
  field.end = static_cast<std::size_t>(position - bytes) + field.content.size();
  return true;
}

// Calls use(field) for the fields of a message, until one gives false. False also if the message is
// cut or broken.
template <class Use>
bool forEachField(Bytes message, Use use) {
  WireField field{};
  for (std::size_t begin = 0; begin < message.size(); begin = field.end) {
    if (!readField(message, begin, field) || !use(field) || !field.isWhole) return false;
  }
  return true;
}

}  // namespace hcy
