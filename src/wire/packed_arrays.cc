// SPDX-License-Identifier: Apache-2.0

#include "wire/packed_arrays.h"

#include <utility>

#include "wire/varint.h"

namespace hcy {
namespace {

// The content of a field whose tag has one byte.
Bytes contentOf(Bytes field) {
  const std::uint8_t* position = field.data() + 1;
  const std::size_t length = readVarint(position, field.data() + field.size());
  return {position, length};
}

}  // namespace

PackedArrays::PackedArrays(std::shared_ptr<const void> owner, Bytes fields, bool isReceived)
    : owner_(std::move(owner)), fields_(fields), isReceived_(isReceived) {
  for (std::size_t begin = 0; begin < fields.size();) {
    begins_.push_back(begin);
    const Bytes content = contentOf(fields.subspan(begin));
    begin = static_cast<std::size_t>(content.data() - fields.data()) + content.size();
  }
}

Bytes PackedArrays::fields(std::size_t from, std::size_t to) const {
  return fields_.subspan(beginOf(from), beginOf(to) - beginOf(from));
}

Bytes PackedArrays::array(std::size_t index) const {
  return contentOf(fields_.subspan(begins_[index]));
}

}  // namespace hcy
