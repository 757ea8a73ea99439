// SPDX-License-Identifier: Apache-2.0

#include "array/integer16_array_proxy.h"

#include <utility>

#include "array/narrow_elements.h"

namespace hcy {

template <WidenedClass Class>
VORTEN16BitIntegerArrayProxy<Class>::VORTEN16BitIntegerArrayProxy(VORTEN_Array::QXType type,
                                                                  Dimensions dimensions,
                                                                  bool complex, std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, complex, count),
      real_(count),
      imaginary_(isComplex() ? count : 0) {}

template <WidenedClass Class>
VORTEN16BitIntegerArrayProxy<Class>::VORTEN16BitIntegerArrayProxy(
    std::shared_ptr<VORTEN_Array> message)
    : VORTENArrayProxy(std::move(message)),
      real_(narrowed<Element>(Class::read(this->message()).elements())),
      imaginary_(narrowed<Element>(Class::read(this->message()).imag_elements())) {}

template <WidenedClass Class>
void VORTEN16BitIntegerArrayProxy<Class>::resize(std::int32_t count) {
  const auto size = static_cast<std::size_t>(count);
  const std::size_t imaginarySize = isComplex() ? size : 0;
  real_.reserve(size);  // so that nothing fails once the message has changed
  imaginary_.reserve(imaginarySize);
  VORTENArrayProxy::resize(count);
  real_.resize(size);
  imaginary_.resize(imaginarySize);
}

template <WidenedClass Class>
void* VORTEN16BitIntegerArrayProxy<Class>::getData() {
  return firstOrNull(real_, requiredElements());
}

template <WidenedClass Class>
void* VORTEN16BitIntegerArrayProxy<Class>::getImagData() {
  return firstOrNull(imaginary_, requiredElements());
}

template <WidenedClass Class>
double VORTEN16BitIntegerArrayProxy<Class>::getScalar() {
  return firstAsDouble(real_);
}

template <WidenedClass Class>
void VORTEN16BitIntegerArrayProxy<Class>::commit() {
  typename Class::Message& part = Class::write(message());
  widen(real_, *part.mutable_elements());
  widen(imaginary_, *part.mutable_imag_elements());
}

template class VORTEN16BitIntegerArrayProxy<INT16_class>;
template class VORTEN16BitIntegerArrayProxy<UINT16_class>;

}  // namespace hcy
