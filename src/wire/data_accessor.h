// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <span>
#include <type_traits>

#include "wire/array_data.h"
#include "wire/dispatch_on_QXType.h"

namespace hcy {

template <class List>
auto spanOf(const List& list) {
  return std::span(list.data(), static_cast<std::size_t>(list.size()));
}

// Where the elements of an array lie; a visitor for dispatch_on_QXType. The pointers stay valid
// until the array's storage changes, and the elements behind them may be written; the array itself
// is only read. Char, struct and cell arrays are left alone: their proxies keep the elements.
struct DataAccessor {
  const ArrayData& array;
  bool complex = false;  // whether the imaginary part of a full array is wanted

  void* realData = nullptr;   // null when there are no elements
  void* imagData = nullptr;   // the same
  double scalar = 0.0;        // the first real element
  std::size_t realCount = 0;  // how many elements lie behind realData
  std::size_t imagCount = 0;  // the same for imagData
  bool isPresent = true;      // whether the part that holds them is there

  template <class Class>
  void operator()(Class) {
    using Element = typename Class::Element;
    const auto elements = array.real.as<Element>();
    // Both byte classes read the first element as a signed byte: 200 is -56.
    using Scalar = std::conditional_t<ByteClass<Class>, signed char, Element>;
    scalar = elements.empty() ? 0.0 : static_cast<double>(static_cast<Scalar>(elements[0]));
    isPresent = ByteClass<Class> ? array.hasReal() : array.hasPart();
    access(elements, realData, realCount);
    if constexpr (NumericClass<Class>) {
      if (complex) access(array.imaginary.as<Element>(), imagData, imagCount);
    }
  }

  void operator()(CHAR_class) {}

  template <ContainerClass Class>
  void operator()(Class) {}

  void operator()(SPARSE_class) {
    const VORTEN_Array::Sparse& sparse = array.sparse();
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      const VORTEN_Array::Double& values = sparse.qxsparsedouble();
      isPresent = sparse.has_qxsparsedouble();
      accessValues(values.elements());
      // The imaginary parts of a sparse array count even if the array is not complex.
      const auto& imaginary = values.imag_elements();
      if (!imaginary.empty()) access(spanOf(imaginary), imagData, imagCount);
    } else {
      isPresent = sparse.has_logical();
      accessValues(sparse.logical().elements());
    }
  }

 private:
  template <class List>
  void accessValues(const List& values) {
    scalar = values.empty() ? 0.0 : static_cast<double>(values[0]);
    access(spanOf(values), realData, realCount);
  }

  // The caller may write what it gets.
  template <class Element>
  static void access(std::span<const Element> elements, void*& data, std::size_t& count) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    data = elements.empty() ? nullptr : const_cast<Element*>(elements.data());
    count = elements.size();
  }
};

// Runs the accessor on the array's type.
inline DataAccessor accessData(const ArrayData& array, bool complex) {
  DataAccessor accessor{array, complex};
  dispatch_on_QXType(array.type(), accessor);
  return accessor;
}

}  // namespace hcy
