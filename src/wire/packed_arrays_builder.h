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

  // A whole field with the head that it would get here. Fields that lie one behind the other are
  // copied together.
  void addField(Bytes field) {
    if (run_.data() + run_.size() != field.data()) endRun();
    run_ = {run_.empty() ? field.data() : run_.data(), run_.size() + field.size()};
  }

  void add(Bytes array) {
    endRun();
    addHead(array.size());
    fields_.insert(fields_.end(), array.begin(), array.end());
  }

  // An array of that many bytes, which write(out) writes.
  template <class Write>
  void add(Write write, std::size_t size) {
    endRun();
    addHead(size);
    fields_.resize(fields_.size() + size);
    write(fields_.data() + fields_.size() - size);
  }

  std::shared_ptr<const PackedArrays> build(bool isReceived) {
    endRun();
    const auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(fields_));
    return std::make_shared<PackedArrays>(owner, Bytes(*owner), isReceived);
  }

 private:
  void endRun() {
    fields_.insert(fields_.end(), run_.begin(), run_.end());
    run_ = {};
  }

  void addHead(std::size_t size) {
    std::uint8_t head[11] = {tag_};
    fields_.insert(fields_.end(), head, writeVarint(size, head + 1));
  }

  std::uint8_t tag_;
  Bytes run_;
  std::vector<std::uint8_t> fields_;
};

}  // namespace hcy
