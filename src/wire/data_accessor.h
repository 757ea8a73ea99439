// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

#include "wire/dispatch_on_QXType.h"
#include "wire/sparse_values.h"

namespace hcy {

// Where the elements of an array lie in its message; a visitor for dispatch_on_QXType. The
// pointers stay valid until the array's storage changes, and the elements behind them may be
// written; the message itself is only read. Char, struct and cell arrays are left alone: their
// proxies keep the elements.
struct DataAccessor {
  const VORTEN_Array& array;
  bool complex = false;  // whether the imaginary part of a full array is wanted

  void* realData = nullptr;   // null when there are no elements
  void* imagData = nullptr;   // the same
  double scalar = 0.0;        // the first real element
  std::size_t realCount = 0;  // how many elements lie behind realData
  std::size_t imagCount = 0;  // the same for imagData
  bool isPresent = true;      // whether the message has the part that holds them

  template <ByteClass Class>
  void operator()(Class) {
    const auto& message = Class::read(array);
    isPresent = message.has_elements();
    accessBytes(message);
  }

  template <RepeatedClass Class>
  void operator()(Class) {
    isPresent = Class::isPresent(array);
    accessRepeated(Class::read(array), complex);
  }

  void operator()(CHAR_class) {}

  template <ContainerClass Class>
  void operator()(Class) {}

  void operator()(SPARSE_class) {
    const VORTEN_Array::Sparse& sparse = array.sparse();
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      // A sparse array hands out the imaginary parts that it has, wanted or not.
      const VORTEN_Array::Double& values = sparse.qxsparsedouble();
      isPresent = sparse.has_qxsparsedouble();
      accessRepeated(values, !values.imag_elements().empty());
    } else {
      isPresent = sparse.has_logical();
      accessRepeated(sparse.logical(), false);
    }
  }

 private:
  // The caller may write what it gets.
  template <class List>
  static void* firstOf(const List& elements) {
    using Element = std::remove_const_t<std::remove_pointer_t<decltype(elements.data())>>;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return elements.empty() ? nullptr : const_cast<Element*>(elements.data());
  }

  template <class Message>
  void accessBytes(const Message& message) {
    const std::string& elements = message.elements();
    // Both byte classes read the first element as a signed byte: 200 is -56.
    scalar = elements.empty() ? 0.0 : static_cast<double>(static_cast<signed char>(elements[0]));
    realData = firstOf(elements);
    realCount = elements.size();
    if (!complex) return;
    imagData = firstOf(message.imag_elements());
    imagCount = message.imag_elements().size();
  }

  template <class Message>
  void accessRepeated(const Message& message, [[maybe_unused]] bool imaginaryWanted) {
    const auto& elements = message.elements();
    scalar = elements.empty() ? 0.0 : static_cast<double>(elements[0]);
    realData = firstOf(elements);
    realCount = static_cast<std::size_t>(elements.size());
    if constexpr (requires { message.imag_elements(); }) {
      if (!imaginaryWanted) return;
      imagData = firstOf(message.imag_elements());
      imagCount = static_cast<std::size_t>(message.imag_elements().size());
    }
  }
};

// Runs the accessor on the array's type.
inline DataAccessor accessData(const VORTEN_Array& array, bool complex) {
  DataAccessor accessor{array, complex};
  dispatch_on_QXType(array.type(), accessor);
  return accessor;
}

// Makes the part present that holds the elements, empty if there are none.
struct PartPresenter {
  VORTEN_Array& array;

  template <class Class>
  void operator()(Class) {
    auto& message = Class::write(array);
    if constexpr (ByteClass<Class>) message.mutable_elements();
  }
  void operator()(SPARSE_class) {
    VORTEN_Array::Sparse& sparse = SPARSE_class::write(array);
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      sparseDoubles(sparse);
    } else {
      sparseLogicals(sparse);
    }
  }
};

}  // namespace hcy
