// SPDX-License-Identifier: Apache-2.0

#include "array/slot_fields.h"

#include <algorithm>
#include <string>
#include <utility>

#include "wire/checked_size.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {
namespace {

// What is sent for an element that was never set.
const std::string& emptyDoubleBytes() {
  static const std::string bytes = emptyDouble()->message().SerializeAsString();
  return bytes;
}

}  // namespace

SlotFields::SlotFields(const SlotTable& slots, int number, const SendingOrder& order)
    : slots_(slots),
      tag_(static_cast<std::uint8_t>(lengthDelimitedTag(number))),
      arePacked_(slots.isPacked()) {
  // The message library holds sizes in signed 32 bits.
  checkedSize(slots.size());
  if (arePacked_) {
    size_ = slots.packed() ? slots.packed()->fields().size() : 0;
    return;
  }
  elements_.reserve(slots.size());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    // Looked at once: another thread may take an element out in between.
    if (const ArrayContent* const content = slots.seen(i)) {
      elements_.push_back(elementOf(*content, order));
    } else {
      elements_.emplace_back().size =
          i < slots.packedSize() ? slots.packed()->array(i).size() : emptyDoubleBytes().size();
    }
    const std::size_t size = elements_.back().size;
    size_ += 1 + varintSize(size) + size;
  }
}

SlotFields::Element SlotFields::elementOf(const ArrayContent& content,
                                          const SendingOrder& order) const {
  Element element{&content, 0, nullptr};
  if (auto other = order.elementToSend(content)) {
    element.other = std::make_unique<SentArray>(std::move(*other));
    element.size = element.other->size();
  } else {
    element.size = content.message().ByteSizeLong();
    checkedSize(element.size);
  }
  return element;
}

std::uint8_t* SlotFields::write(std::uint8_t* out) const {
  if (arePacked_) return slots_.packed() ? copyBytes(slots_.packed()->fields(), out) : out;
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    const Element& element = elements_[i];
    if (element.content == nullptr && i < slots_.packedSize()) {
      out = copyBytes(slots_.packed()->fields(i, i + 1), out);
      continue;
    }
    *out++ = tag_;
    out = writeVarint(element.size, out);
    out = writeElement(element, out);
  }
  return out;
}

std::uint8_t* SlotFields::writeElement(const Element& element, std::uint8_t* out) const {
  if (element.other) return element.other->write(out);
  if (element.content) return element.content->message().SerializeWithCachedSizesToArray(out);
  const std::string& bytes = emptyDoubleBytes();
  return std::copy(bytes.begin(), bytes.end(), out);
}

std::shared_ptr<const PackedArrays> packed(const SlotTable& slots, int number) {
  if (slots.isPacked()) return slots.packed();
  const SlotFields fields(slots, number, SendingOrder());
  const std::shared_ptr<std::uint8_t[]> block(new std::uint8_t[fields.size()]);
  fields.write(block.get());
  bool isReceived = slots.packed() && slots.packed()->isReceived();
  for (std::size_t i = 0; i < slots.size() && !isReceived; ++i) {
    const ArrayContent* const content = slots.seen(i);
    isReceived = content != nullptr && content->isReceived;
  }
  return std::make_shared<PackedArrays>(block, Bytes(block.get(), fields.size()), isReceived);
}

}  // namespace hcy
