// SPDX-License-Identifier: Apache-2.0

#include "array/narrow_array_proxy.h"

#include <algorithm>
#include <span>
#include <utility>

#include "wire/checked_size.h"
#include "wire/element_storage.h"
#include "wire/packed_varints.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy {
namespace {

using Buffer = std::vector<std::uint16_t>;
using google::protobuf::RepeatedField;

// The low 16 bits of each value.
template <class WireElement>
Buffer narrowed(const RepeatedField<WireElement>& list) {
  Buffer buffer(static_cast<std::size_t>(list.size()));
  std::ranges::transform(list, buffer.begin(),
                         [](WireElement value) { return static_cast<std::uint16_t>(value); });
  return buffer;
}

template <class Class>
std::span<const typename Class::Element> elementsOf(const Buffer& buffer) {
  return {reinterpret_cast<const typename Class::Element*>(buffer.data()), buffer.size()};
}

// Makes the list the whole buffer, whatever it held.
template <class Class>
void widen(const Buffer& buffer, RepeatedField<WireElement<Class>>& list) {
  list.Resize(checkedSize(buffer.size()), 0);
  std::ranges::copy(elementsOf<Class>(buffer), list.mutable_data());
}

template <class Class>
class NarrowFields : public ElementFields {
 public:
  explicit NarrowFields(const NarrowElements& elements)
      : elements_(elements),
        realSize_(packedSize(elementsOf<Class>(elements.real))),
        imaginarySize_(packedSize(elementsOf<Class>(elements.imaginary))) {}

  std::size_t size() const override { return fieldSize(realSize_) + fieldSize(imaginarySize_); }
  std::uint8_t* write(std::uint8_t* out) const override {
    out = writeField(1, elements_.real, realSize_, out);
    return writeField(2, elements_.imaginary, imaginarySize_, out);
  }

 private:
  // A packed field without elements is not written.
  static std::size_t fieldSize(std::size_t size) {
    return size == 0 ? 0 : 1 + varintSize(size) + size;
  }
  static std::uint8_t* writeField(int number, const Buffer& buffer, std::size_t size,
                                  std::uint8_t* out) {
    if (size == 0) return out;
    out = writeVarint(lengthDelimitedTag(number), out);
    out = writeVarint(size, out);
    return writePacked(elementsOf<Class>(buffer), out);
  }

  const NarrowElements& elements_;
  std::size_t realSize_;
  std::size_t imaginarySize_;
};

}  // namespace

template <WidenedClass Class>
NarrowArrayProxy<Class>::NarrowArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions,
                                          bool complex, std::uint64_t count)
    : VORTENArrayProxy(type, dimensions, NumericClass<Class> && complex && count != 0) {
  content()->isCommitted = false;
  elements_.real.resize(count);
  if (isComplex()) elements_.imaginary.resize(count);
}

template <WidenedClass Class>
NarrowArrayProxy<Class>::NarrowArrayProxy(const ContentPtr& content) : VORTENArrayProxy(content) {
  const typename Class::Message& part = Class::read(message());
  elements_.real = narrowed(part.elements());
  if constexpr (NumericClass<Class>) elements_.imaginary = narrowed(part.imag_elements());
}

template <WidenedClass Class>
NarrowArrayProxy<Class>::NarrowArrayProxy(ContentPtr content, NarrowElements&& elements)
    : VORTENArrayProxy(std::move(content), !elements.imaginary.empty()),
      elements_(std::move(elements)) {}

template <WidenedClass Class>
void NarrowArrayProxy<Class>::resize(std::int32_t count) {
  const auto size = static_cast<std::size_t>(count);
  const std::size_t imaginarySize = isComplex() ? size : 0;
  elements_.real.reserve(size);  // so that nothing fails once the message has changed
  elements_.imaginary.reserve(imaginarySize);
  if (content()->isCommitted) VORTENArrayProxy::resize(count);
  elements_.real.resize(size);
  elements_.imaginary.resize(imaginarySize);
  storageChanged();
}

template <WidenedClass Class>
void* NarrowArrayProxy<Class>::handedOut(const Buffer& buffer) const {
  if (buffer.empty() || buffer.size() < requiredElements()) return nullptr;
  // The caller may write what it gets.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  return const_cast<std::uint16_t*>(buffer.data());
}

template <WidenedClass Class>
double NarrowArrayProxy<Class>::getScalar() const {
  return elements_.real.empty() ? 0.0 : static_cast<Element>(elements_.real.front());
}

template <WidenedClass Class>
void NarrowArrayProxy<Class>::commitTo(ArrayContent& content) const {
  NewPart<Class> part(content.message());
  auto& elements = *part->mutable_elements();
  // Room for both lists first: then nothing fails once one of them has changed.
  elements.Reserve(checkedSize(elements_.real.size()));
  if constexpr (NumericClass<Class>) {
    auto& imaginary = *part->mutable_imag_elements();
    imaginary.Reserve(checkedSize(elements_.imaginary.size()));
    widen<Class>(elements_.imaginary, imaginary);
  }
  widen<Class>(elements_.real, elements);
  part.keep();
  content.isCommitted = true;
}

template <WidenedClass Class>
ArrayToSend NarrowArrayProxy<Class>::toSend(const SendingOrder& /*order*/) const {
  if (!content()->isCommitted) return {content(), std::make_unique<NarrowFields<Class>>(elements_)};
  // The message has what was committed last.
  const ContentPtr copy = copyOf(*content());
  commitTo(*copy);
  return {copy, nullptr};
}

template class NarrowArrayProxy<INT16_class>;
template class NarrowArrayProxy<UINT16_class>;
template class NarrowArrayProxy<CHAR_class>;

}  // namespace hcy
