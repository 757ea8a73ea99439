// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "wire/array_class_traits.h"
#include "wire/bytes.h"
#include "wire/packed_arrays.h"

namespace hcy {

// Elements of an array that lie outside its message: the fields of its typed part that hold them.
class ElementFields {
 public:
  ElementFields() = default;
  ElementFields(const ElementFields&) = delete;
  ElementFields& operator=(const ElementFields&) = delete;

  virtual std::size_t size() const = 0;
  virtual std::uint8_t* write(std::uint8_t* out) const = 0;
  virtual ~ElementFields() = default;
};

// The elements of a container that are in wire form already.
class PackedFields : public ElementFields {
 public:
  explicit PackedFields(std::shared_ptr<const PackedArrays> arrays) : arrays_(std::move(arrays)) {}

  std::size_t size() const override { return arrays_->fields().size(); }
  std::uint8_t* write(std::uint8_t* out) const override {
    return copyBytes(arrays_->fields(), out);
  }

 private:
  std::shared_ptr<const PackedArrays> arrays_;
};

// An array in wire form: its message, with elements put into its typed part that lie outside it,
// byte for byte as the message library would write one message with all of it. The message and the
// elements must not change meanwhile; many threads may write one array at once.
class WrittenArray {
 public:
  // Elements that are null are all in the message.
  WrittenArray(const VORTEN_Array& message, const ElementFields* elements);
  WrittenArray(const WrittenArray&) = delete;
  WrittenArray& operator=(const WrittenArray&) = delete;

  std::size_t size() const { return size_; }
  std::uint8_t* write(std::uint8_t* out) const;

 private:
  void placeElements();

  const VORTEN_Array& message_;
  const ElementFields* elements_;
  std::size_t size_ = 0;
  std::string around_;  // the message without those elements
  // What of that stands before the part, in the part before and behind the elements, and behind it.
  Bytes before_, partBefore_, partBehind_, behind_;
  std::size_t partSize_ = 0;
};

}  // namespace hcy
