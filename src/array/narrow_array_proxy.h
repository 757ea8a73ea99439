// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "array/array_proxy.h"
#include "array/array_to_send.h"
#include "wire/read_array.h"

namespace hcy {

// An int16, uint16 or char array. Its elements travel as 32-bit values; the caller works on buffers
// of the true width, an imaginary one only if the array is complex.
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
    return {reinterpret_cast<const char16_t*>(elements_.real.data()), elements_.real.size()};
  }

 protected:
  void commitTo(ArrayContent& content) const override;

 private:
  using Element = typename Class::Element;

  void* handedOut(const std::vector<std::uint16_t>& buffer) const;

  NarrowElements elements_;
};

using VORTENCharArrayProxy = NarrowArrayProxy<CHAR_class>;
template <class Class>
using VORTEN16BitIntegerArrayProxy = NarrowArrayProxy<Class>;

extern template class NarrowArrayProxy<INT16_class>;
extern template class NarrowArrayProxy<UINT16_class>;
extern template class NarrowArrayProxy<CHAR_class>;

}  // namespace hcy
