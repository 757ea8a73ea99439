// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "array/array_to_send.h"
#include "array/slot_table.h"

namespace hcy {

// The elements of a container behind a handle, to be written: what has not been taken out of the
// packed arrays is copied as it is.
class SlotFields : public ElementFields {
 public:
  // `number` is that of the repeated field.
  SlotFields(const SlotTable& slots, int number, const SendingOrder& order);

  std::size_t size() const override { return size_; }
  std::uint8_t* write(std::uint8_t* out) const override;

 private:
  struct Element {
    const ArrayContent* content = nullptr;  // null for one that is packed or was never set
    std::size_t size = 0;
    // What takes the place of the content, or takes long to size twice.
    std::unique_ptr<SentArray> other;
  };

  Element elementOf(const ArrayContent& content, const SendingOrder& order) const;
  std::uint8_t* writeElement(const Element& element, std::uint8_t* out) const;

  const SlotTable& slots_;
  std::uint8_t tag_;
  bool arePacked_;
  std::vector<Element> elements_;
  std::size_t size_ = 0;
};

// The elements in wire form, to be kept.
std::shared_ptr<const PackedArrays> packed(const SlotTable& slots, int number);

}  // namespace hcy
