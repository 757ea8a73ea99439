// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "wire/array_data.h"
#include "wire/bytes.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {

// Elements of an array that lie outside it: the fields of its typed part that hold them.
class ElementFields {
 public:
  ElementFields() = default;
  ElementFields(const ElementFields&) = delete;
  ElementFields& operator=(const ElementFields&) = delete;

  virtual std::size_t size() const = 0;
  virtual std::uint8_t* write(std::uint8_t* out) const = 0;
  virtual ~ElementFields() = default;
};

// How many bytes a field takes whose tag has one byte, and whose content has that many.
constexpr std::size_t lengthDelimitedSize(std::size_t size) { return 1 + varintSize(size) + size; }

// Writes the head of a field whose tag has one byte.
inline std::uint8_t* writeHead(int number, std::size_t size, std::uint8_t* out) {
  *out++ = static_cast<std::uint8_t>(lengthDelimitedTag(number));
  return writeVarint(size, out);
}

// An array in wire form, byte for byte as the message library would write one message with all of
// it. What it holds must not change meanwhile; many threads may write one array at once.
class WrittenArray {
 public:
  // If there are elements from outside, they are written instead of the array's own.
  explicit WrittenArray(const ArrayData& array, const ElementFields* elements = nullptr);
  WrittenArray(const WrittenArray&) = delete;
  WrittenArray& operator=(const WrittenArray&) = delete;

  std::size_t size() const { return size_; }
  std::uint8_t* write(std::uint8_t* out) const;

 private:
  // The rest of an array with a part: what of it stands before the part, in it behind the elements,
  // and behind it.
  struct Rest {
    std::string bytes;
    Bytes before, partBehind, behind;
  };

  void placeRest();
  std::size_t sizeElements();
  std::uint8_t* writeElements(std::uint8_t* out) const;

  const ArrayData& array_;
  const ElementFields* elements_;
  bool hasPart_;
  std::size_t dimensionsSize_ = 0;
  std::size_t realSize_ = 0;
  std::size_t imaginarySize_ = 0;
  std::size_t partSize_ = 0;
  std::size_t restSize_ = 0;  // outside the part
  std::size_t size_ = 0;
  std::unique_ptr<Rest> rest_;
};

}  // namespace hcy
