// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wire/dispatch_on_QXType.h"

namespace hcy {

// Where the elements of an array lie in its message; a visitor for dispatch_on_QXType. The
// pointers stay valid until the array's storage changes. Char, struct and cell arrays are left
// alone: their proxies keep the elements.
//
// Asking makes the typed sub-message present, and with it the byte strings of uint8 and int8.
struct DataAccessor {
  VORTEN_Array& array;
  bool complex = false;  // whether the imaginary part of a full array is wanted

  void* realData = nullptr;  // null when there are no elements
  void* imagData = nullptr;  // the same
  double scalar = 0.0;       // the first real element

  template <ByteClass Class>
  void operator()(Class) {
    accessBytes(Class::write(array));
  }

  template <RepeatedClass Class>
  void operator()(Class) {
    accessRepeated(Class::write(array));
  }

  void operator()(CHAR_class) {}

  template <ContainerClass Class>
  void operator()(Class) {}

  void operator()(SPARSE_class);

 private:
  template <class Message>
  void accessBytes(Message& message);
  template <class Message>
  void accessRepeated(Message& message);
};

// Runs the accessor on the array's type.
DataAccessor accessData(VORTEN_Array& array, bool complex);

}  // namespace hcy
