// SPDX-License-Identifier: Apache-2.0

#include "array/narrow_array_proxy.h"

#include <utility>

#include "wire/checked_size.h"
#include "wire/element_storage.h"
#include "wire/packed_varints.h"

namespace hcy {
namespace {

template <class Class>
class NarrowFields : public ElementFields {
 public:
  explicit NarrowFields(const NarrowElements& elements)
      : elements_(elements),
        realSize_(packedSize(elementsOf(elements.real))),
        imaginarySize_(packedSize(elementsOf(elements.imaginary))) {}

  std::size_t size() const override { return fieldSize(realSize_) + fieldSize(imaginarySize_); }
  std::uint8_t* write(std::uint8_t* out) const override {
    out = writeField(1, elements_.real, realSize_, out);
    return writeField(2, elements_.imaginary, imaginarySize_, out);
  }

 private:
  static auto elementsOf(const ElementBuffer& buffer) {
    return buffer.as<typename Class::Element>();
  }
  // A packed field without elements is not written.
  static std::size_t fieldSize(std::size_t size) {
    return size == 0 ? 0 : lengthDelimitedSize(size);
  }
  static std::uint8_t* writeField(int number, const ElementBuffer& buffer, std::size_t size,
                                  std::uint8_t* out) {
    if (size == 0) return out;
    return writePacked(elementsOf(buffer), writeHead(number, size, out));
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
  elements_.real.resize(count * sizeof(Element));
  if (isComplex()) elements_.imaginary.resize(count * sizeof(Element));
}

template <WidenedClass Class>
NarrowArrayProxy<Class>::NarrowArrayProxy(const ContentPtr& content)
    : VORTENArrayProxy(content), elements_{data().real.copy(), data().imaginary.copy()} {}

template <WidenedClass Class>
NarrowArrayProxy<Class>::NarrowArrayProxy(ContentPtr content, NarrowElements&& elements)
    : VORTENArrayProxy(std::move(content), !elements.imaginary.empty()),
      elements_(std::move(elements)) {}

template <WidenedClass Class>
void NarrowArrayProxy<Class>::resize(std::int32_t count) {
  const auto size = static_cast<std::size_t>(count) * sizeof(Element);
  const std::size_t imaginarySize = isComplex() ? size : 0;
  elements_.real.reserve(size);  // so that nothing fails once the content has changed
  elements_.imaginary.reserve(imaginarySize);
  if (content()->isCommitted) VORTENArrayProxy::resize(count);
  elements_.real.resize(size);
  elements_.imaginary.resize(imaginarySize);
  storageChanged();
}

template <WidenedClass Class>
void* NarrowArrayProxy<Class>::handedOut(const ElementBuffer& buffer) const {
  const auto elements = buffer.as<Element>();
  if (elements.empty() || elements.size() < requiredElements()) return nullptr;
  // The caller may write what it gets.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  return const_cast<Element*>(elements.data());
}

template <WidenedClass Class>
double NarrowArrayProxy<Class>::getScalar() const {
  return elements_.real.empty() ? 0.0 : elements_.real.as<Element>().front();
}

template <WidenedClass Class>
void NarrowArrayProxy<Class>::commitTo(ArrayContent& content) const {
  // Copies of both parts first: then nothing fails once one of them has changed.
  NarrowElements elements = elements_.copy();
  content.data.clearWide();
  content.data.real = std::move(elements.real);
  content.data.imaginary = std::move(elements.imaginary);
  content.data.showPart();
  content.isCommitted = true;
}

template <WidenedClass Class>
std::unique_ptr<VORTENArrayProxy> NarrowArrayProxy<Class>::copied() const {
  return std::make_unique<NarrowArrayProxy>(copyWithoutElements(*content()), elements_.copy());
}

template <WidenedClass Class>
ArrayToSend NarrowArrayProxy<Class>::toSend(const SendingOrder& /*order*/) const {
  if (!data().areWide()) return {content(), std::make_unique<NarrowFields<Class>>(elements_)};
  // The wider values that the content has do not count.
  const ContentPtr copy = copyOf(*content());
  commitTo(*copy);
  return {copy, nullptr};
}

template class NarrowArrayProxy<INT16_class>;
template class NarrowArrayProxy<UINT16_class>;
template class NarrowArrayProxy<CHAR_class>;

}  // namespace hcy
