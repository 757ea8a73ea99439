// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "wire/array_data.h"
#include "wire/dispatch_on_QXType.h"

namespace hcy {

// The part of a sparse array. One that was not there before is gone again unless it is kept.
class SparsePart {
 public:
  explicit SparsePart(ArrayData& array) : array_(array), isNew_(!array.hasSparse()) {
    array.writeSparse();
  }
  SparsePart(const SparsePart&) = delete;
  SparsePart& operator=(const SparsePart&) = delete;
  ~SparsePart() {
    if (isNew_) array_.clearSparse();
  }

  VORTEN_Array::Sparse& operator*() const { return array_.writeSparse(); }
  VORTEN_Array::Sparse* operator->() const { return &array_.writeSparse(); }
  void keep() { isNew_ = false; }

 private:
  ArrayData& array_;
  bool isNew_;
};

// Gives a new array its storage: count zeros, and as many imaginary zeros if complex. Containers
// and sparse arrays are left alone: the proxy's slots and the sparse creation see to them.
struct InitialStorageSizer {
  ArrayData& array;
  std::uint64_t count = 0;
  bool complex = false;

  template <class Class>
  void operator()(Class);
  template <ContainerClass Class>
  void operator()(Class) {}
  void operator()(SPARSE_class) {}
};

// Gives an existing array storage for count elements: what is kept keeps its linear index, what
// is new is zero. An imaginary part follows if there is one. The slots of a container are not
// here. A sparse array ignores the count and gets the column starts for its columns.
struct ElementStorageResizer {
  ArrayData& array;
  std::uint32_t count = 0;

  template <class Class>
  void operator()(Class);
  template <ContainerClass Class>
  void operator()(Class) {}
  void operator()(SPARSE_class);
};

// Run the two on the array's type.
void sizeInitialStorage(ArrayData& array, std::uint64_t count, bool complex);
void resizeElementStorage(ArrayData& array, std::uint32_t count);

// Makes the part present that holds the elements, empty if there are none.
void showElements(ArrayData& array);

// What an unset element is: a 0-by-0 double.
void makeEmptyDouble(ArrayData& array);

}  // namespace hcy
