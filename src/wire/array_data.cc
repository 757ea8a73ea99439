// SPDX-License-Identifier: Apache-2.0

#include "wire/array_data.h"

#include "wire/dispatch_on_QXType.h"

namespace hcy {

ArrayData ArrayData::copy() const {
  ArrayData copied = copyWithoutElements();
  copied.real = real.copy();
  copied.imaginary = imaginary.copy();
  return copied;
}

ArrayData ArrayData::copyWithoutElements() const {
  ArrayData copied;
  copied.type_ = type_;
  copied.hasType_ = hasType_;
  copied.hasPart_ = hasPart_;
  copied.hasReal_ = hasReal_;
  copied.hasImaginary_ = hasImaginary_;
  copied.areWide_ = areWide_;
  copied.dimensions = dimensions;
  if (container_) {
    copied.writeContainer().fieldNames = container_->fieldNames;
    copied.writeContainer().arrays = container_->arrays;
  }
  // The generated copy constructor would leak what it has copied when it runs out of memory.
  if (rest_) copied.writeRest().CopyFrom(*rest_);
  return copied;
}

// Fields of the part that nobody knows stay.
void ArrayData::clearWide() {
  if (!areWide_) return;
  areWide_ = false;
  dispatch_on_QXType(type(), [this]<class Class>(Class) {
    if constexpr (WidenedClass<Class>) {
      typename Class::Message& part = Class::write(*rest_);
      part.clear_elements();
      if constexpr (NumericClass<Class>) part.clear_imag_elements();
    }
  });
}

const ContainerData& ArrayData::container() const {
  static const ContainerData none;
  return container_ ? *container_ : none;
}

}  // namespace hcy
