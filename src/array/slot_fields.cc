// SPDX-License-Identifier: Apache-2.0

#include "array/slot_fields.h"

#include <algorithm>
#include <string>
#include <utility>

#include "array/array_content.h"
#include "wire/checked_size.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {
namespace {

// What is sent for an element that was never set.
const std::string& emptyDoubleBytes() {
  static const std::string bytes = [] {
    const ContentPtr content = emptyDouble();
    const WrittenArray written(content->data);
    std::string text(written.size(), '\0');
    written.write(reinterpret_cast<std::uint8_t*>(text.data()));
    return text;
  }();
  return bytes;
}

// Whether sizing the array costs next to nothing.
bool isSmall(const ArrayContent& content) {
  constexpr std::size_t most = 1024;
  return content.data.rest() == nullptr && content.data.real.size() <= most && !needsPart(content);
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
  auto other = order.elementToSend(content);
  if (!other && !isSmall(content)) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): only its count of owners changes
    other = ArrayToSend{ContentPtr(const_cast<ArrayContent*>(&content)), nullptr};
  }
  if (other) element.other = std::make_unique<SentArray>(std::move(*other));
  element.size = other ? element.other->size() : WrittenArray(content.data).size();
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
  if (element.content) return WrittenArray(element.content->data).write(out);
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
