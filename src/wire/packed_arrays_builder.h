// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "wire/packed_arrays.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {

// Packs arrays that are in wire form already.
class PackedArraysBuilder {
 public:
  // The number of the field, and how many bytes are expected.
  PackedArraysBuilder(int number, std::size_t room)
      : tag_(static_cast<std::uint8_t>(lengthDelimitedTag(number))) {
    fields_.reserve(room);
  }

  void add(Bytes array) {
    addHead(array.size());
    fields_.insert(fields_.end(), array.begin(), array.end());
  }

  // An array of that many bytes, which write(out) writes.
  template <class Write>
  void add(Write write, std::size_t size) {
    addHead(size);
    fields_.resize(fields_.size() + size);
    write(fields_.data() + fields_.size() - size);
  }

  std::shared_ptr<const PackedArrays> build(bool isReceived) {
    const auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(fields_));
    return std::make_shared<PackedArrays>(owner, Bytes(*owner), isReceived);
  }

 private:
  void addHead(std::size_t size) {
    std::uint8_t head[11] = {tag_};
    fields_.insert(fields_.end(), head, writeVarint(size, head + 1));
  }

  std::uint8_t tag_;
  std::vector<std::uint8_t> fields_;
};

}  // namespace hcy
