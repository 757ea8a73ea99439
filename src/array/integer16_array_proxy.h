// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "array/array_proxy.h"

namespace hcy {

// An int16 or uint16 array: the elements in buffers of their own, an imaginary one only if
// complex.
template <WidenedClass Class>
class VORTEN16BitIntegerArrayProxy : public VORTENArrayProxy {
 public:
  VORTEN16BitIntegerArrayProxy(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                               std::uint64_t count);
  explicit VORTEN16BitIntegerArrayProxy(std::shared_ptr<VORTEN_Array> message);

  void resize(std::int32_t count) override;
  std::size_t getElementSize() const override { return sizeof(Element); }
  void* getData() override;
  void* getImagData() override;
  double getScalar() override;
  void commit() override;

 private:
  using Element = typename Class::Element;

  std::vector<Element> real_;
  std::vector<Element> imaginary_;
};

extern template class VORTEN16BitIntegerArrayProxy<INT16_class>;
extern template class VORTEN16BitIntegerArrayProxy<UINT16_class>;

}  // namespace hcy
