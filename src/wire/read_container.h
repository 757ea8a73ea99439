// SPDX-License-Identifier: Apache-2.0
//
// Reading the elements of containers.

#pragma once

#include <cstddef>

#include "wire/array_data.h"
#include "wire/canonical_array.h"
#include "wire/packed_arrays_builder.h"
#include "wire/write_array.h"

namespace hcy {

// Reads the names of the fields of a struct.
template <class Class>
class NamesReader {
 public:
  static constexpr bool isStruct = Class::type == VORTEN_Array::STRUCT;

  static bool isName(const WireField& field) {
    return isStruct && field.is(STRUCT_class::Message::kFieldNamesFieldNumber);
  }
  static bool wants(const WireField& field) {
    return isName(field) || field.is(Class::Message::kElementsFieldNumber);
  }

  explicit NamesReader(ArrayData& array) : array_(array) {}

  bool readName(const WireField& field) {
    if (!field.isWhole) return false;
    const auto* const name = reinterpret_cast<const char*>(field.content.data());
    array_.writeContainer().fieldNames.emplace_back(name, field.content.size());
    return true;
  }

 private:
  ArrayData& array_;
};

// Collects the elements of a container.
template <class Class>
class ArraysReader : public NamesReader<Class> {
 public:
  ArraysReader(ArrayData& array, Bytes part, PackedArraysBuilder& arrays, int nesting)
      : NamesReader<Class>(array), part_(part), arrays_(arrays), nesting_(nesting) {}

  bool read(const WireField& field) {
    if (this->isName(field)) return this->readName(field);
    if (!field.isWhole || nesting_ <= 0) return false;
    if (!isCanonical(field.content, nesting_ - 1)) return addOther(field.content);
    const std::size_t size = field.content.size();
    if (field.end - field.begin == lengthDelimitedSize(size)) {
      arrays_.addField(part_.subspan(field.begin, field.end - field.begin));
    } else {
      arrays_.add(field.content);
    }
    return true;
  }

 private:
  // What the message library would have written otherwise is kept as it writes it.
  bool addOther(Bytes bytes);

  Bytes part_;
  PackedArraysBuilder& arrays_;
  int nesting_;
};

// Finds where the elements of a container that is kept as it is lie.
template <class Class>
class ArraysFinder : public NamesReader<Class> {
 public:
  ArraysFinder(ArrayData& array, Bytes part) : NamesReader<Class>(array), part_(part) {}

  bool read(const WireField& field) {
    if (this->isName(field)) return this->readName(field);
    if (end_ == 0) begin_ = field.begin;
    end_ = field.end;
    return true;
  }
  Bytes fields() const { return part_.subspan(begin_, end_ - begin_); }

 private:
  Bytes part_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace hcy
