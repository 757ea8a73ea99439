// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "array/array_proxy.h"
#include "array/lent_slots.h"

namespace hcy {

// A struct or cell array: one slot an element and field, element-major, each null until it is set
// or read. A slot shares its message with every handle and container that holds the element; the
// array's own message gets copies by commit().
template <ContainerClass Class>
class VORTENStructCellArrayProxy : public VORTENArrayProxy {
 public:
  // `count` is the number of slots: elements times fields for a struct.
  VORTENStructCellArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                             std::uint64_t count);
  explicit VORTENStructCellArrayProxy(std::shared_ptr<VORTEN_Array> message);

  // Gives the array `count` elements; touches the slots only. Throws positive overflow when these
  // are over 2147483647 slots, before or after.
  void resize(std::int32_t count) override;
  std::size_t getElementSize() const override { return sizeof(typename Class::Element); }
  void* getData() override;
  double getScalar() override { return 0.0; }
  void commit() override;
  void beginReading() override;
  void endReading() override { lentSlots_.reset(); }
  std::unique_ptr<VORTENArrayProxy> clone() override;

  // The element of a slot, made a 0-by-0 double if it was never set; null where there is no slot.
  std::shared_ptr<VORTEN_Array> slot(std::size_t index);

  // Makes the slot share the value's element, or a snapshot of it if it is this very array. Where
  // there is no slot, nothing happens.
  void setSlot(std::size_t index, VORTENArrayProxy& value);

  std::size_t numberOfFields() const;

  // Adds a field of never-set slots behind the others.
  void addField(std::string&& name) requires(Class::type == VORTEN_Array::STRUCT);

  // Removes a field that exists. Does not throw.
  void removeField(std::size_t field) requires(Class::type == VORTEN_Array::STRUCT);

 private:
  // The container's part of the message, brought to the heap if it lies in the memory of an
  // output: that takes nothing back before its end, and swaps no list with one on the heap.
  typename Class::Message& partOnHeap();

  // How many elements there are slots for; the slots of the last may be incomplete.
  std::size_t elementsWithSlots() const;

  Slots slots_;
  std::unique_ptr<LentSlots> lentSlots_;
  // The number of elements to make slots for when a struct array without fields gets one.
  std::size_t elementsWithoutFields_ = 0;
};

extern template class VORTENStructCellArrayProxy<STRUCT_class>;
extern template class VORTENStructCellArrayProxy<CELL_class>;

}  // namespace hcy
