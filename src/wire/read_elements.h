// SPDX-License-Identifier: Apache-2.0
//
// Reading the elements of full classes.

#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>

#include "wire/array_data.h"
#include "wire/fixed_width.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"
#include "wire/wire_parts.h"

namespace hcy {

// Whether the message library would hold the value as a number of the class's own width.
template <class Class>
bool isNarrow(std::uint64_t varint) {
  using Element = typename Class::Element;
  const auto value = static_cast<WireElement<Class>>(varint);
  return value >= std::numeric_limits<Element>::min() &&
         value <= std::numeric_limits<Element>::max();
}

template <class Class>
bool areNarrow(Bytes packed) {
  std::uint8_t all = 0;
  for (const std::uint8_t byte : packed) all |= byte;
  if (all < 0x80) return true;
  const std::uint8_t* position = packed.data();
  const std::uint8_t* const end = position + packed.size();
  while (position != nullptr && position != end) {
    const std::uint64_t varint = readVarint(position, end);
    if (position != nullptr && !isNarrow<Class>(varint)) return false;
  }
  return true;
}

// Elements that are to stay in the memory of the bytes that they were read from.
struct StayingElements {
  // From this size on, copying them costs more than the memory around them.
  static constexpr std::size_t kLeast = std::size_t{1} << 20;

  const std::shared_ptr<void>& owner;
  Bytes real;
  Bytes imaginary;
  std::size_t elementSize = 1;

  void clear() { real = imaginary = {}; }

  // The part that lies first is moved first, so that none is written over before it is moved.
  void putInto(ArrayData& array) const {
    const bool isRealFirst = real.data() < imaginary.data();
    if (isRealFirst && !real.empty()) array.real = moved(real);
    if (!imaginary.empty()) array.imaginary = moved(imaginary);
    if (!isRealFirst && !real.empty()) array.real = moved(real);
  }

 private:
  // What stands before elements is longer than what they are moved by, or stands behind elements
  // that have been moved by as much.
  ElementBuffer moved(Bytes elements) const {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the owner's memory may be written
    auto* const begin = const_cast<std::uint8_t*>(elements.data());
    std::uint8_t* const target = begin - reinterpret_cast<std::uintptr_t>(begin) % elementSize;
    if (target != begin) std::memmove(target, begin, elements.size());
    return ElementBuffer::inside(owner, reinterpret_cast<std::byte*>(target), elements.size());
  }
};

// Reads the elements of a full class in the caller's own form. Those of a repeated field may be
// packed or each in a field of its own.
template <class Class>
class ElementsReader {
 public:
  // Only whoever keeps wide values has to know of them.
  ElementsReader(ArrayData& array, StayingElements* staying, bool keepsWide)
      : array_(array), staying_(staying), seeksWide_(WidenedClass<Class> && keepsWide) {}

  static bool wants(const WireField& field) {
    return isElement(field, 1) || (NumericClass<Class> && isElement(field, 2));
  }

  bool read(const WireField& field) {
    ElementBuffer& buffer = field.number() == 1 ? array_.real : array_.imaginary;
    if constexpr (ByteClass<Class>) {
      field.number() == 1 ? array_.showReal() : array_.showImaginary();
      buffer.truncate(0);
      if (staying_ != nullptr) (field.number() == 1 ? staying_->real : staying_->imaginary) = {};
      return add(field, buffer);
    } else if constexpr (isVarint<Class>) {
      if (field.isLengthDelimited()) {
        if (seeksWide_) hasWide_ = hasWide_ || !areNarrow<Class>(field.content);
        return readPacked<Element>(field.content, buffer, expected(field.content, buffer));
      }
      if (seeksWide_) hasWide_ = hasWide_ || !isNarrow<Class>(field.value);
      const auto element = std::is_same_v<Element, bool> ? static_cast<Element>(field.value != 0)
                                                         : static_cast<Element>(field.value);
      std::memcpy(buffer.extend(sizeof element), &element, sizeof element);
      return true;
    } else {
      return add(field, buffer);
    }
  }

  bool hasWide() const { return hasWide_; }

 private:
  using Element = typename Class::Element;

  static bool isElement(const WireField& field, int number) {
    if (field.is(number)) return true;
    if constexpr (ByteClass<Class>) return false;
    if constexpr (isVarint<Class>) return field.isVarint(number);
    return sizeof(Element) == 8 ? field.isFixed64(number) : field.isFixed32(number);
  }

  // How many elements a field probably holds, 0 if that is unknown. Only the first field is
  // expected to hold all: multiplying many dimensions for each of many fields would take quadratic
  // time.
  std::uint64_t expected(Bytes packed, const ElementBuffer& buffer) const {
    return buffer.empty() && !packed.empty() ? elementCount(array_) : 0;
  }

  // Elements of fixed width: those that are there whole.
  bool add(const WireField& field, ElementBuffer& buffer) {
    const std::size_t cut = field.content.size() % sizeof(Element);
    const Bytes elements = field.content.first(field.content.size() - cut);
    if (!stay(elements, field.number(), buffer)) append(elements, buffer);
    return cut == 0;
  }

  static void append(Bytes elements, ElementBuffer& buffer) {
    if (elements.empty()) return;
    auto* const appended = reinterpret_cast<std::uint8_t*>(buffer.extend(elements.size()));
    copyFixedWidth<Element>(elements, appended);
  }

  // Only one stretch of elements can stay where it is.
  bool stay(Bytes elements, int number, ElementBuffer& buffer) {
    if (staying_ == nullptr || !liesAsItTravels<Element>) return false;
    Bytes& place = number == 1 ? staying_->real : staying_->imaginary;
    if (place.empty() && buffer.empty() && elements.size() >= StayingElements::kLeast) {
      place = elements;
      staying_->elementSize = sizeof(Element);
      return true;
    }
    append(place, buffer);
    place = {};
    return false;
  }

  ArrayData& array_;
  StayingElements* staying_;
  bool seeksWide_;
  bool hasWide_ = false;
};

}  // namespace hcy
