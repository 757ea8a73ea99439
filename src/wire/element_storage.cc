// SPDX-License-Identifier: Apache-2.0

#include "wire/element_storage.h"

#include <utility>

#include "wire/checked_size.h"
#include "wire/protobuf_version.h"
#include "wire/sparse_values.h"

namespace hcy {
namespace {

template <class Class>
std::size_t storageSize(std::uint64_t count) {
  return static_cast<std::size_t>(checkedSize(count)) * sizeof(typename Class::Element);
}

template <class Class>
void show(ArrayData& array) {
  array.showPart();
  if constexpr (ByteClass<Class>) array.showReal();
}

}  // namespace

template <class Class>
void InitialStorageSizer::operator()(Class) {
  const std::size_t size = storageSize<Class>(count);
  const bool hasImaginary = complex && NumericClass<Class>;
  ElementBuffer real;
  ElementBuffer imaginary;
  real.resize(size);
  if (hasImaginary) imaginary.resize(size);
  array.real = std::move(real);
  array.imaginary = std::move(imaginary);
  show<Class>(array);
  if (hasImaginary) array.showImaginary();
}

// Room for both parts is had before either changes: they stay of one length whatever fails.
template <class Class>
void ElementStorageResizer::operator()(Class) {
  const std::size_t size = storageSize<Class>(count);
  const bool hasImaginary = NumericClass<Class> && !array.imaginary.empty();
  array.real.reserve(size);
  if (hasImaginary) {
    array.imaginary.reserve(size);
    array.imaginary.resize(size);
  }
  array.real.resize(size);
  array.clearWide();
  show<Class>(array);
}

void ElementStorageResizer::operator()(SPARSE_class) {
  const std::uint64_t columns = array.dimensions.size() > 1 ? array.dimensions[1] : 0;
  const int starts = checkedSize(columns == UINT64_MAX ? columns : columns + 1);
  SparsePart part(array);
  resizeList(*part->mutable_jc(), starts);
  part.keep();
}

void sizeInitialStorage(ArrayData& array, std::uint64_t count, bool complex) {
  dispatch_on_QXType(array.type(), InitialStorageSizer{array, count, complex});
}

void resizeElementStorage(ArrayData& array, std::uint32_t count) {
  dispatch_on_QXType(array.type(), ElementStorageResizer{array, count});
}

void showElements(ArrayData& array) {
  dispatch_on_QXType(array.type(), [&array]<class Class>(Class) {
    if constexpr (!SparseClass<Class>) {
      show<Class>(array);
    } else if (array.sparse().type() == VORTEN_Array::Sparse::DOUBLE) {
      sparseDoubles(array.writeSparse());
    } else {
      sparseLogicals(array.writeSparse());
    }
  });
}

void makeEmptyDouble(ArrayData& array) {
  array.setType(VORTEN_Array::DOUBLE);
  array.dimensions.assign(2, 0);
}

}  // namespace hcy
