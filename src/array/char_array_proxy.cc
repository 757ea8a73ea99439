// SPDX-License-Identifier: Apache-2.0

#include "array/char_array_proxy.h"

#include <utility>

#include "array/narrow_elements.h"

namespace hcy {

VORTENCharArrayProxy::VORTENCharArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions,
                                           bool /*complex*/, std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, false, count), codeUnits_(count) {}

VORTENCharArrayProxy::VORTENCharArrayProxy(std::shared_ptr<VORTEN_Array> message)
    : VORTENArrayProxy(std::move(message)),
      codeUnits_(narrowed<char16_t>(CHAR_class::read(this->message()).elements())) {}

void VORTENCharArrayProxy::resize(std::int32_t count) {
  const auto size = static_cast<std::size_t>(count);
  codeUnits_.reserve(size);  // so that nothing fails once the message has changed
  VORTENArrayProxy::resize(count);
  codeUnits_.resize(size);
}

void* VORTENCharArrayProxy::getData() { return firstOrNull(codeUnits_, requiredElements()); }

double VORTENCharArrayProxy::getScalar() { return firstAsDouble(codeUnits_); }

void VORTENCharArrayProxy::commit() {
  widen(codeUnits_, *CHAR_class::write(message()).mutable_elements());
}

}  // namespace hcy
