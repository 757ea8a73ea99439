// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "array/array_to_send.h"
#include "array/slot_table.h"

namespace hcy {

// The elements of a container behind a handle, to be written: what has not been taken out of the
// packed arrays is copied as it is. Small elements are written at once, so that each is looked at
// only once; the others are written in their place among them.
class SlotFields : public ElementFields {
 public:
  // `number` is that of the repeated field.
  SlotFields(const SlotTable& slots, int number, const SendingOrder& order);

  std::size_t size() const override { return size_; }
  std::uint8_t* write(std::uint8_t* out) const override;

 private:
  // What stands behind so many bytes of small elements: packed fields, or an array without its
  // head.
  struct Piece {
    std::size_t smallBefore;
    Bytes packed;
    std::unique_ptr<SentArray> array;
  };

  void addSlot(std::size_t index, const SendingOrder& order);
  void addPacked(std::size_t index);
  void addArray(ArrayToSend array);
  // Adds the head of an element and room for so many bytes behind it.
  std::uint8_t* addHead(std::size_t elementSize, std::size_t room);

  const SlotTable& slots_;
  std::uint8_t tag_;
  ElementBuffer small_;
  std::vector<Piece> pieces_;
  std::size_t size_ = 0;
};

// The elements in wire form, to be kept.
std::shared_ptr<const PackedArrays> packed(const SlotTable& slots, int number);

}  // namespace hcy
