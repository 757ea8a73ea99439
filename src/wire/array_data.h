// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/container/small_vector.hpp>
#include <cstdint>
#include <memory>
#include <span>

#include "memory/element_buffer.h"
#include "wire/array_class_traits.h"
#include "wire/element_count.h"
#include "wire/field_index.h"
#include "wire/packed_arrays.h"

namespace hcy {

// The dimensions of most arrays take no allocation. Their address changes only with their number.
using DimensionList = boost::container::small_vector<std::uint64_t, 2>;

// What only a struct or cell has: the names of its fields, an index of them, and its elements as
// they were committed last, null if there are none.
struct ContainerData {
  FieldIndex::Names fieldNames;
  FieldIndex index;
  std::shared_ptr<const PackedArrays> arrays;
};

// What an array holds: its type, its dimensions, and the elements of its class in the form that the
// caller gets. Everything else that a message of an array may hold, and a sparse array's part, is
// in a message beside it, which most arrays do not have.
class ArrayData {
 public:
  ArrayData() = default;
  // NOLINTBEGIN(bugprone-exception-escape): a list of dimensions moves without an allocation
  ArrayData(ArrayData&&) = default;
  ArrayData& operator=(ArrayData&&) = default;
  // NOLINTEND(bugprone-exception-escape)
  ~ArrayData() = default;

  ArrayData copy() const;
  ArrayData copyWithoutElements() const;

  VORTEN_Array::QXType type() const { return static_cast<VORTEN_Array::QXType>(type_); }
  bool hasType() const { return hasType_; }
  void setType(VORTEN_Array::QXType type) {
    type_ = type;
    hasType_ = true;
  }

  DimensionList dimensions;
  ElementBuffer real;
  ElementBuffer imaginary;

  // The elements of a 16-bit class may have been sent as wider values. These stay in the message
  // beside, and are what is sent, until others take their place.
  bool areWide() const { return areWide_; }
  void setWide() { areWide_ = true; }
  void clearWide();

  // Whether the part that holds the elements is there, if only an empty one. The byte strings of
  // the byte classes may be there or not even then. Asked only of classes other than sparse ones.
  bool hasPart() const { return hasPart_; }
  bool hasReal() const { return hasReal_; }
  bool hasImaginary() const { return hasImaginary_; }
  void showPart() { hasPart_ = true; }
  void showReal() { hasPart_ = hasReal_ = true; }
  void showImaginary() { hasPart_ = hasImaginary_ = true; }

  // Of a struct or cell; empty ones if nothing was written.
  const ContainerData& container() const;
  bool hasContainer() const { return container_ != nullptr; }
  ContainerData& writeContainer() {
    if (!container_) container_ = std::make_unique<ContainerData>();
    return *container_;
  }

  // The message beside, null if there is none.
  const VORTEN_Array* rest() const { return rest_.get(); }
  VORTEN_Array& writeRest() {
    if (!rest_) rest_ = std::make_unique<VORTEN_Array>();
    return *rest_;
  }

  const VORTEN_Array::Sparse& sparse() const {
    return rest_ ? rest_->sparse() : VORTEN_Array::Sparse::default_instance();
  }
  bool hasSparse() const { return rest_ && rest_->has_sparse(); }
  VORTEN_Array::Sparse& writeSparse() { return SPARSE_class::write(writeRest()); }
  void clearSparse() { rest_->clear_sparse(); }

 private:
  std::int32_t type_ = VORTEN_Array::UINT8;
  bool hasType_ : 1 = false;
  bool hasPart_ : 1 = false;
  bool hasReal_ : 1 = false;
  bool hasImaginary_ : 1 = false;
  bool areWide_ : 1 = false;
  std::unique_ptr<ContainerData> container_;
  std::unique_ptr<VORTEN_Array> rest_;
};

inline std::uint64_t elementCount(const ArrayData& array) {
  return elementCount(std::span(array.dimensions.data(), array.dimensions.size()));
}

}  // namespace hcy
