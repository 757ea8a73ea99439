// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

#include "wire/array_data.h"
#include "wire/dispatch_on_QXType.h"

namespace hcy {

// What an array says of itself; a visitor for dispatch_on_QXType, which changes nothing in the
// array.
struct HcyArrayAttributesRetriever {
  const ArrayData& array;

  // Of the values, for a sparse array: double when its sparse type is DOUBLE, else logical.
  VORTEN_Array::QXType type = VORTEN_Array::UINT8;
  const char* className = "";
  std::size_t elementSize = 0;  // bytes that an element takes
  bool isComplex = false;       // the imaginary part alone tells: isComplex of the wire is not read
  bool isNumeric = false;

  template <class Class>
  void operator()(Class) {
    describe<Class>();
    isComplex = NumericClass<Class> && !array.imaginary.empty();
  }

  void operator()(SPARSE_class) {
    const VORTEN_Array::Sparse& sparse = array.sparse();
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      describe<DOUBLE_class>();
      isComplex = !sparse.qxsparsedouble().imag_elements().empty();
    } else {
      describe<LOGICAL_class>();
    }
  }

 private:
  template <class Class>
  void describe() {
    type = Class::type;
    className = Class::name;
    isNumeric = Class::is_numeric;
    elementSize = sizeof(typename Class::Element);
  }
};

// The attributes of an array; throws std::invalid_argument for a type that is not served.
inline HcyArrayAttributesRetriever attributesOf(const ArrayData& array) {
  HcyArrayAttributesRetriever attributes{array};
  dispatch_on_QXType(array.type(), attributes);
  return attributes;
}

}  // namespace hcy
