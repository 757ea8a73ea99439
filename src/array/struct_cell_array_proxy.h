// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "array/array_proxy.h"
#include "array/array_to_send.h"
#include "array/slot_table.h"

namespace hcy {

// A struct or cell array: one slot an element and field, element-major. A slot shares its content
// with every handle and container that holds the element; the array's own content gets the elements
// in wire form by commit().
template <ContainerClass Class>
class VORTENStructCellArrayProxy : public VORTENArrayProxy {
 public:
  // `count` is the number of slots: elements times fields for a struct.
  VORTENStructCellArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                             std::uint64_t count);
  explicit VORTENStructCellArrayProxy(const ContentPtr& shared);

  // Gives the array `count` elements; touches the slots only. Throws positive overflow when these
  // are over 2147483647 slots, before or after.
  void resize(std::int32_t count) override;
  std::size_t getElementSize() const override { return sizeof(typename Class::Element); }
  double getScalar() const override { return 0.0; }
  ArrayToSend toSend(const SendingOrder& order) const override;

  // The element of a slot, made a 0-by-0 double if it is unset; null if there is no slot.
  ContentPtr slot(std::size_t index) const { return slots_.at(index); }

  // Makes the slot share the value's element, or a snapshot of it if it is this very array. Where
  // there is no slot, nothing happens.
  void setSlot(std::size_t index, VORTENArrayProxy& value);

  std::size_t numberOfFields() const;

  // Adds a field of unset slots after the others; false, and nothing has changed, if there
  // would be too many.
  bool addField(std::string&& name) requires(Class::type == VORTEN_Array::STRUCT);

  // Removes a field that exists. Nothing has changed if it throws.
  void removeField(std::size_t field) requires(Class::type == VORTEN_Array::STRUCT);

 protected:
  void commitTo(ArrayContent& content) const override;
  std::unique_ptr<VORTENArrayProxy> copied() const override;

 private:
  // How many elements there are slots for; the slots of the last may be incomplete.
  std::size_t elementsWithSlots() const;

  SlotTable slots_;
  // The number of elements to make slots for when a struct array without fields gets one.
  std::size_t elementsWithoutFields_ = 0;
  bool areClaimed_ = false;  // only a reply has said that there are as many
};

extern template class VORTENStructCellArrayProxy<STRUCT_class>;
extern template class VORTENStructCellArrayProxy<CELL_class>;

}  // namespace hcy
