// SPDX-License-Identifier: Apache-2.0

#include "array/struct_cell_array_proxy.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "array/slot_fields.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"

namespace hcy {
namespace {

// A message of a few bytes can claim any number of elements without fields; a field is added to no
// more than these.
constexpr std::uint64_t kMostElementsWithoutFields = 1U << 16;

}  // namespace

template <ContainerClass Class>
VORTENStructCellArrayProxy<Class>::VORTENStructCellArrayProxy(VORTEN_Array::QXType type,
                                                              Dimensions dimensions,
                                                              bool /*complex*/, std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, false),
      slots_(static_cast<std::size_t>(count)),
      elementsWithoutFields_(elementCount(dimensions)) {}

template <ContainerClass Class>
VORTENStructCellArrayProxy<Class>::VORTENStructCellArrayProxy(const ContentPtr& shared)
    : VORTENArrayProxy(shared),
      slots_(data().container().arrays),
      elementsWithoutFields_(elementCount(data())),
      areClaimed_(content()->isReceived) {}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::resize(std::int32_t count) {
  checkedSize(slots_.size());
  const auto elements = static_cast<std::size_t>(count);
  slots_.resize(static_cast<std::size_t>(checkedSize(elements * numberOfFields())));
  elementsWithoutFields_ = elements;
  areClaimed_ = false;
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::commitTo(ArrayContent& content) const {
  auto arrays = packed(slots_, Class::Message::kElementsFieldNumber);
  content.data.writeContainer().arrays = std::move(arrays);
  content.data.showPart();
}

template <ContainerClass Class>
ArrayToSend VORTENStructCellArrayProxy<Class>::toSend(const SendingOrder& order) const {
  return {content(),
          std::make_unique<SlotFields>(slots_, Class::Message::kElementsFieldNumber, order)};
}

template <ContainerClass Class>
std::unique_ptr<VORTENArrayProxy> VORTENStructCellArrayProxy<Class>::copied() const {
  const ContentPtr copy = copyOf(*content());
  copy->data.showPart();
  auto array = std::make_unique<VORTENStructCellArrayProxy>(copy);
  array->slots_.copyFrom(slots_);
  array->elementsWithoutFields_ = elementsWithoutFields_;
  array->areClaimed_ = areClaimed_;
  return array;
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::setSlot(std::size_t index, VORTENArrayProxy& value) {
  value.commit();
  if (index >= slots_.size()) return;
  const bool isThisArray = value.content() == content();
  slots_.set(index, isThisArray ? copyOf(*content()) : value.content());
}

template <ContainerClass Class>
std::size_t VORTENStructCellArrayProxy<Class>::numberOfFields() const {
  if constexpr (Class::type == VORTEN_Array::STRUCT) {
    return data().container().fieldNames.size();
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
bool VORTENStructCellArrayProxy<Class>::addField(std::string&& name) requires(
    Class::type == VORTEN_Array::STRUCT) {
  const std::size_t fields = numberOfFields();
  const std::size_t elements = elementsWithSlots();
  const std::uint64_t slots = saturatingProduct(elements, fields + 1);
  if (slots > std::numeric_limits<std::int32_t>::max()) return false;
  if (fields == 0 && areClaimed_ && elements > kMostElementsWithoutFields) return false;
  SlotTable regrouped(slots);
  // Slots without a field name, which only a reply can bring, are one to an element.
  const std::size_t slotsPerElement = std::max<std::size_t>(fields, 1);
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (slots_.isUnset(i)) continue;
    const std::size_t element = i / slotsPerElement;
    regrouped.set(element * (fields + 1) + i % slotsPerElement, slots_.at(i));
  }
  ContainerData& container = data().writeContainer();
  container.index.reset();
  container.fieldNames.push_back(std::move(name));
  data().showPart();
  slots_ = std::move(regrouped);
  return true;
}

template <ContainerClass Class>
void VORTENStructCellArrayProxy<Class>::removeField(std::size_t field) requires(
    Class::type == VORTEN_Array::STRUCT) {
  const std::size_t fields = numberOfFields();
  const std::size_t elements = elementsWithSlots();
  SlotTable regrouped(slots_.size() - (slots_.size() + fields - 1 - field) / fields);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (i % fields == field) continue;
    if (!slots_.isUnset(i)) regrouped.set(kept, slots_.at(i));
    ++kept;
  }
  ContainerData& container = data().writeContainer();
  container.index.reset();
  container.fieldNames.erase(container.fieldNames.begin() + static_cast<std::ptrdiff_t>(field));
  elementsWithoutFields_ = elements;
  areClaimed_ = false;
  slots_ = std::move(regrouped);
}

template class VORTENStructCellArrayProxy<STRUCT_class>;
template class VORTENStructCellArrayProxy<CELL_class>;

}  // namespace hcy
