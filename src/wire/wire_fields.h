// SPDX-License-Identifier: Apache-2.0
//
// The fields of a message in wire form, one by one.

#pragma once

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "wire/bytes.h"

namespace hcy {

constexpr std::uint32_t lengthDelimitedTag(int number) {
  return static_cast<std::uint32_t>(number) << 3 | 2;
}

struct WireField {
  std::uint32_t tag;
  Bytes content;      // of a length-delimited field, as far as it arrived
  std::size_t begin;  // where the field lies, tag and length included
  std::size_t end;
  bool isWhole;  // false if the message ends inside the content

  int number() const { return static_cast<int>(tag >> 3); }
  // Whether it is the length-delimited field of this number.
  bool is(int fieldNumber) const { return tag == lengthDelimitedTag(fieldNumber); }
  bool isVarint(int fieldNumber) const {
    return tag == static_cast<std::uint32_t>(fieldNumber) << 3;
  }
  bool isLengthDelimited() const { return (tag & 7) == 2; }
};

// Calls use(field) for the fields of a message, until one gives false. False also if the message is
// cut or broken.
template <class Use>
bool forEachField(Bytes message, Use use) {
  using google::protobuf::internal::WireFormatLite;
  google::protobuf::io::CodedInputStream input(message.data(), static_cast<int>(message.size()));
  const auto position = [&input] { return static_cast<std::size_t>(input.CurrentPosition()); };
  for (std::size_t begin = 0; begin < message.size(); begin = position()) {
    WireField field{input.ReadTag(), {}, begin, 0, true};
    if (field.isLengthDelimited()) {
      int length = 0;
      if (!input.ReadVarintSizeAsInt(&length)) return false;
      const Bytes rest = message.subspan(position());
      field.content = rest.first(std::min(rest.size(), static_cast<std::size_t>(length)));
      field.isWhole = input.Skip(length);
    } else if (field.tag == 0 || !WireFormatLite::SkipField(&input, field.tag)) {
      return false;
    }
    field.end = position();
    if (!use(field) || !field.isWhole) return false;
  }
  return true;
}

}  // namespace hcy
