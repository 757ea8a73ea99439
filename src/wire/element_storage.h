// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "wire/dispatch_on_QXType.h"

namespace hcy {

// The typed part of an array. One that was not there before is gone again unless it is kept.
template <class Class>
class NewPart {
 public:
  explicit NewPart(VORTEN_Array& array) : array_(array), isNew_(!Class::isPresent(array)) {
    Class::write(array);
  }
  NewPart(const NewPart&) = delete;
  NewPart& operator=(const NewPart&) = delete;
  ~NewPart() {
    if (isNew_) Class::clear(array_);
  }

  typename Class::Message& operator*() const { return Class::write(array_); }
  typename Class::Message* operator->() const { return &Class::write(array_); }
  void keep() { isNew_ = false; }

 private:
  VORTEN_Array& array_;
  bool isNew_;
};

// Gives a new array its storage: count zeros, and as many imaginary zeros if complex. Containers
// and sparse arrays are left alone: the proxy's slots and the sparse creation see to them.
struct InitialStorageSizer {
  VORTEN_Array& array;
  std::uint64_t count = 0;
  bool complex = false;

  template <class Class>
  void operator()(Class);
  template <ContainerClass Class>
  void operator()(Class) {}
  void operator()(SPARSE_class) {}
};

// Gives an existing array storage for count elements: what is kept keeps its linear index, what
// is new is zero (an empty 0-by-0 double in a container). An imaginary part follows if there is
// one. A sparse array ignores the count and gets the column starts for its columns.
struct ElementStorageResizer {
  VORTEN_Array& array;
  std::uint32_t count = 0;

  template <class Class>
  void operator()(Class);
  void operator()(SPARSE_class);
};

// Run the two on the array's type.
void sizeInitialStorage(VORTEN_Array& array, std::uint64_t count, bool complex);
void resizeElementStorage(VORTEN_Array& array, std::uint32_t count);

// Makes the array what an element is that was never set: a 0-by-0 double.
void makeEmptyDouble(VORTEN_Array& array);

}  // namespace hcy
