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

// What is sent for an unset element.
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

// What is written at once takes no more memory than it takes where it lies.
constexpr std::size_t kSmall = 1024;

bool isSmall(const ArrayContent& content) {
  return content.data.rest() == nullptr && content.data.real.size() <= kSmall &&
         content.data.imaginary.size() <= kSmall && !content.data.hasContainer() &&
         !needsPart(content);
}

// How far ahead elements are fetched, which lie anywhere in memory.
constexpr std::size_t kAhead = 8;

void fetch(const ArrayContent* content) {
  if (content == nullptr) return;
  const auto* const bytes = reinterpret_cast<const char*>(content);
  __builtin_prefetch(bytes);
  __builtin_prefetch(bytes + 64);
}

}  // namespace

SlotFields::SlotFields(const SlotTable& slots, int number, const SendingOrder& order)
    : slots_(slots), tag_(static_cast<std::uint8_t>(lengthDelimitedTag(number))) {
  // The message library holds sizes in signed 32 bits.
  checkedSize(slots.size());
  if (slots.isPacked()) {
    if (slots.packed()) pieces_.push_back({0, slots.packed()->fields(), nullptr});
  } else {
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (i + kAhead < slots.size()) fetch(slots.seen(i + kAhead));
      addSlot(i, order);
    }
  }
  size_ = small_.size();
  for (const Piece& piece : pieces_) {
    size_ += piece.array ? piece.array->size() : piece.packed.size();
  }
}

void SlotFields::addSlot(std::size_t index, const SendingOrder& order) {
  // Looked at once: another thread may take an element out in between.
  const ArrayContent* const content = slots_.seen(index);
  if (content == nullptr) {
    if (index < slots_.packedSize()) return addPacked(index);
    const std::string& bytes = emptyDoubleBytes();
    std::ranges::copy(bytes, addHead(bytes.size(), bytes.size()));
    return;
  }
  if (auto other = order.elementToSend(*content)) return addArray(std::move(*other));
  if (!isSmall(*content)) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): only its count of owners changes
    return addArray({ContentPtr(const_cast<ArrayContent*>(content)), nullptr});
  }
  const WrittenArray written(content->data);
  written.write(addHead(written.size(), written.size()));
}

void SlotFields::addPacked(std::size_t index) {
  const Bytes field = slots_.packed()->fields(index, index + 1);
  Piece* const last = pieces_.empty() ? nullptr : &pieces_.back();
  const bool isBehind = last != nullptr && last->smallBefore == small_.size() && !last->array &&
                        last->packed.data() + last->packed.size() == field.data();
  if (isBehind) {
    last->packed = {last->packed.data(), last->packed.size() + field.size()};
  } else if (field.size() <= kSmall && index != 0 && slots_.seen(index - 1) != nullptr) {
    copyBytes(field, reinterpret_cast<std::uint8_t*>(small_.extend(field.size())));
  } else {
    pieces_.push_back({small_.size(), field, nullptr});
  }
}

void SlotFields::addArray(ArrayToSend array) {
  auto sent = std::make_unique<SentArray>(std::move(array));
  addHead(sent->size(), 0);
  pieces_.push_back({small_.size(), {}, std::move(sent)});
}

std::uint8_t* SlotFields::addHead(std::size_t elementSize, std::size_t room) {
  const std::size_t size = 1 + varintSize(elementSize) + room;
  auto* const head = reinterpret_cast<std::uint8_t*>(small_.extend(size));
  *head = tag_;
  return writeVarint(elementSize, head + 1);
}

std::uint8_t* SlotFields::write(std::uint8_t* out) const {
  const Bytes small = small_.as<std::uint8_t>();
  std::size_t written = 0;
  for (const Piece& piece : pieces_) {
    out = copyBytes(small.subspan(written, piece.smallBefore - written), out);
    written = piece.smallBefore;
    out = piece.array ? piece.array->write(out) : copyBytes(piece.packed, out);
  }
  return copyBytes(small.subspan(written), out);
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
