// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "array/array_proxy.h"
#include "array/array_to_send.h"

namespace hcy {

// The elements of an array of a 16-bit class, an imaginary part only if it is complex.
struct NarrowElements {
  ElementBuffer real;
  ElementBuffer imaginary;

  NarrowElements copy() const { return {real.copy(), imaginary.copy()}; }
};

// An int16, uint16 or char array. The caller works on elements of the handle's own, which reach the
// content by commit().
template <WidenedClass Class>
class NarrowArrayProxy : public VORTENArrayProxy {
 public:
  NarrowArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                   std::uint64_t count);
  explicit NarrowArrayProxy(const ContentPtr& content);
  NarrowArrayProxy(ContentPtr content, NarrowElements&& elements);

  void resize(std::int32_t count) override;
  std::size_t getElementSize() const override { return sizeof(Element); }
  void* getData() const override { return handedOut(elements_.real); }
  void* getImagData() const override { return handedOut(elements_.imaginary); }
  double getScalar() const override;
  ArrayToSend toSend(const SendingOrder& order) const override;

  std::u16string_view codeUnits() const requires(Class::type == VORTEN_Array::CHAR) {
    const auto units = elements_.real.as<char16_t>();
    return {units.data(), units.size()};
  }

 protected:
  void commitTo(ArrayContent& content) const override;
  std::unique_ptr<VORTENArrayProxy> copied() const override;

 private:
  using Element = typename Class::Element;

  void* handedOut(const ElementBuffer& buffer) const;

  NarrowElements elements_;
};

using VORTENCharArrayProxy = NarrowArrayProxy<CHAR_class>;
template <class Class>
using VORTEN16BitIntegerArrayProxy = NarrowArrayProxy<Class>;

extern template class NarrowArrayProxy<INT16_class>;
extern template class NarrowArrayProxy<UINT16_class>;
extern template class NarrowArrayProxy<CHAR_class>;

}  // namespace hcy
