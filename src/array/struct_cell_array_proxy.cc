// SPDX-License-Identifier: Apache-2.0

#include "array/struct_cell_array_proxy.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "array/message_copy.h"
#include "array/output_memory.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"
#include "wire/element_storage.h"

namespace hcy {
namespace {

// A message of a few bytes can claim any number of elements without fields; adding a field makes
// slots for no more than these.
constexpr std::uint64_t kMostElementsWithoutFields = 1U << 16;

Slots copied(const Elements& elements) {
  Slots slots;
  slots.reserve(static_cast<std::size_t>(elements.size()));
  for (const VORTEN_Array& element : elements) {
    slots.push_back(copyOf(element));
  }
  return slots;
}

// Saves the copies where nobody else holds the message: commit() puts elements back before
// anybody can see it.
Slots takenOut(Elements& elements, OutputMemory* memory) {
  Slots slots(static_cast<std::size_t>(elements.size()));
  for (std::size_t i = slots.size(); i-- > 0;) {
    if (memory != nullptr) {
      slots[i] = memory->own(&elements[static_cast<int>(i)]);
      elements.UnsafeArenaReleaseLast();
    } else {
      slots[i] = std::unique_ptr<VORTEN_Array>(elements.ReleaseLast());
    }
  }
  return slots;
}

}  // namespace

template <ContainerClass Class>
VORTENStructCellArrayProxy<Class>::VORTENStructCellArrayProxy(VORTEN_Array::QXType type,
                                                              Dimensions dimensions, bool complex,
                                                              std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, complex, count),
      slots_(count),
      elementsWithoutFields_(elementCount(dimensions)) {}

template <ContainerClass Class>
VORTENStructCellArrayProxy<Class>::VORTENStructCellArrayProxy(std::shared_ptr<VORTEN_Array> message)
    : VORTENArrayProxy(std::move(message)),
      elementsWithoutFields_(std::min(elementCount(this->message()), kMostElementsWithoutFields)) {
  if (Class::read(this->message()).elements().empty()) return;
  auto& elements = *Class::write(this->message()).mutable_elements();
  if (sharedMessage().use_count() == 1) {
    slots_ = takenOut(elements, OutputMemory::of(sharedMessage()));
  } else {
    slots_ = copied(elements);
  }
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::resize(std::int32_t count) {
  checkedSize(slots_.size());
  const auto elements = static_cast<std::size_t>(count);
  slots_.resize(static_cast<std::size_t>(checkedSize(elements * numberOfFields())));
  elementsWithoutFields_ = elements;
}

template <ContainerClass Class>
void* VORTENStructCellArrayProxy<Class>::getData() {
  return slots_.empty() ? nullptr : slots_.data();
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::commit() {
  // Filled aside: the message keeps the old elements until all copies are made.
  Elements elements;
  elements.Reserve(checkedSize(slots_.size()));
  for (const auto& slot : slots_) {
    if (slot) {
      *elements.Add() = *slot;
    } else {
      makeEmptyDouble(*elements.Add());
    }
  }
  partOnHeap().mutable_elements()->Swap(&elements);
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::beginReading() {
  if (lentSlots_) return;
  // Nobody can miss the copies of commit() in a message that nobody else holds.
  if (sharedMessage().use_count() == 1) {
    lentSlots_ = std::make_unique<LentSlots>(slots_, *Class::write(message()).mutable_elements());
  } else {
    commit();
  }
}

template <ContainerClass Class>
std::unique_ptr<VORTENArrayProxy> VORTENStructCellArrayProxy<Class>::clone() {
  auto copy = VORTENArrayProxy::clone();
  static_cast<VORTENStructCellArrayProxy&>(*copy).elementsWithoutFields_ = elementsWithoutFields_;
  return copy;
}

template <ContainerClass Class>
std::shared_ptr<VORTEN_Array> VORTENStructCellArrayProxy<Class>::slot(std::size_t index) {
  if (index >= slots_.size()) return nullptr;
  if (!slots_[index]) {
    auto element = std::make_shared<VORTEN_Array>();
    makeEmptyDouble(*element);
    slots_[index] = std::move(element);
  }
  return slots_[index];
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::setSlot(std::size_t index, VORTENArrayProxy& value) {
  value.commit();
  if (index >= slots_.size()) return;
  const bool isThisArray = &value.message() == &message();
  slots_[index] = isThisArray ? copyOf(message()) : value.sharedMessage();
}

template <ContainerClass Class>
std::size_t VORTENStructCellArrayProxy<Class>::numberOfFields() const {
  if constexpr (Class::type == VORTEN_Array::STRUCT) {
    return static_cast<std::size_t>(Class::read(message()).field_names_size());
  } else {
    return 1;
  }
}

template <ContainerClass Class>
std::size_t VORTENStructCellArrayProxy<Class>::elementsWithSlots() const {
  const std::size_t fields = numberOfFields();
  if (fields == 0) return std::max(elementsWithoutFields_, slots_.size());
  return (slots_.size() + fields - 1) / fields;
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::addField(std::string&& name) requires(
    Class::type == VORTEN_Array::STRUCT) {
  const std::size_t fields = numberOfFields();
  Slots regrouped(elementsWithSlots() * (fields + 1));
  partOnHeap();
  auto& names = *STRUCT_class::write(message()).mutable_field_names();
  names.Reserve(names.size() + 1);
  *names.Add() = std::move(name);
  // Slots without a field name, which only a reply can bring, are one to an element.
  const std::size_t slotsPerElement = std::max<std::size_t>(fields, 1);
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    const std::size_t element = i / slotsPerElement;
    regrouped[element * (fields + 1) + i % slotsPerElement] = std::move(slots_[i]);
  }
  slots_ = std::move(regrouped);
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::removeField(std::size_t field) requires(
    Class::type == VORTEN_Array::STRUCT) {
  auto& names = *STRUCT_class::write(message()).mutable_field_names();
  const std::size_t fields = numberOfFields();
  elementsWithoutFields_ = elementsWithSlots();
  std::size_t kept = 0;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (i % fields != field) {
      if (kept != i) slots_[kept] = std::move(slots_[i]);
      ++kept;
    }
  }
  slots_.resize(kept);
  names.DeleteSubrange(static_cast<int>(field), 1);
}

template <ContainerClass Class>
typename Class::Message& VORTENStructCellArrayProxy<Class>::partOnHeap() {
  typename Class::Message& part = Class::write(message());
  if (part.GetArena() == nullptr) return part;
  auto copy = std::make_unique<typename Class::Message>();
  copy->CopyFrom(part);
  Class::replace(message(), std::move(copy));
  return Class::write(message());
}

template class VORTENStructCellArrayProxy<STRUCT_class>;
template class VORTENStructCellArrayProxy<CELL_class>;

}  // namespace hcy
