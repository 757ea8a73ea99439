// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

#include "wire/dispatch_on_QXType.h"
#include "wire/sparse_values.h"

namespace hcy {

// Where the elements of an array lie in its message; a visitor for dispatch_on_QXType. The
// pointers stay valid until the array's storage changes. Char, struct and cell arrays are left
// alone: their proxies keep the elements.
//
// Asking makes the typed sub-message present, and with it the byte strings of uint8 and int8.
struct DataAccessor {
  VORTEN_Array& array;
  bool complex = false;  // whether the imaginary part of a full array is wanted

  void* realData = nullptr;   // null when there are no elements
  void* imagData = nullptr;   // the same
  double scalar = 0.0;        // the first real element
  std::size_t realCount = 0;  // how many elements lie behind realData
  std::size_t imagCount = 0;  // the same for imagData

  template <ByteClass Class>
  void operator()(Class) {
    accessBytes(Class::write(array));
  }

  template <RepeatedClass Class>
  void operator()(Class) {
    accessRepeated(Class::write(array), complex);
  }

  void operator()(CHAR_class) {}

  template <ContainerClass Class>
  void operator()(Class) {}

  void operator()(SPARSE_class) {
    VORTEN_Array::Sparse& sparse = SPARSE_class::write(array);
    if (sparse.type() == VORTEN_Array::Sparse::DOUBLE) {
      // A sparse array hands out the imaginary parts that it has, wanted or not.
      VORTEN_Array::Double& values = sparseDoubles(sparse);
      accessRepeated(values, !values.imag_elements().empty());
    } else {
      accessRepeated(sparseLogicals(sparse), false);
    }
  }

 private:
  static void* firstOf(std::string& bytes) { return bytes.empty() ? nullptr : bytes.data(); }

  template <class Element>
  static void* firstOf(google::protobuf::RepeatedField<Element>& elements) {
    return elements.empty() ? nullptr : elements.mutable_data();
  }

  template <class Message>
  void accessBytes(Message& message) {
    std::string& elements = *message.mutable_elements();
    // Both byte classes read the first element as a signed byte: 200 is -56.
    scalar = elements.empty() ? 0.0 : static_cast<double>(static_cast<signed char>(elements[0]));
    realData = firstOf(elements);
    realCount = elements.size();
    if (!complex) return;
    imagData = firstOf(*message.mutable_imag_elements());
    imagCount = message.imag_elements().size();
  }

  template <class Message>
  void accessRepeated(Message& message, [[maybe_unused]] bool imaginaryWanted) {
    auto& elements = *message.mutable_elements();
    scalar = elements.empty() ? 0.0 : static_cast<double>(elements[0]);
    realData = firstOf(elements);
    realCount = static_cast<std::size_t>(elements.size());
    if constexpr (requires { message.mutable_imag_elements(); }) {
      if (!imaginaryWanted) return;
      imagData = firstOf(*message.mutable_imag_elements());
      imagCount = static_cast<std::size_t>(message.imag_elements().size());
    }
  }
};

// Runs the accessor on the array's type.
inline DataAccessor accessData(VORTEN_Array& array, bool complex) {
  DataAccessor accessor{array, complex};
  dispatch_on_QXType(array.type(), accessor);
  return accessor;
}

}  // namespace hcy
