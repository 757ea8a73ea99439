// SPDX-License-Identifier: Apache-2.0
//
// Which field of an array holds the elements of which class.

#pragma once

#include <type_traits>

#include "wire/array_class_traits.h"

namespace hcy {

inline constexpr int kFirstPart = VORTEN_Array::kUint8FieldNumber;
inline constexpr int kLastPart = VORTEN_Array::kSparseFieldNumber;

// The parts are numbered as their types are, but for structs and cells, which have changed places.
constexpr int partNumber(VORTEN_Array::QXType type) {
  if (type == VORTEN_Array::STRUCT) return VORTEN_Array::kStructFieldNumber;
  if (type == VORTEN_Array::CELL) return VORTEN_Array::kCellFieldNumber;
  return kFirstPart + type;
}

constexpr VORTEN_Array::QXType typeOfPart(int number) {
  if (number == VORTEN_Array::kStructFieldNumber) return VORTEN_Array::STRUCT;
  if (number == VORTEN_Array::kCellFieldNumber) return VORTEN_Array::CELL;
  return static_cast<VORTEN_Array::QXType>(number - kFirstPart);
}

static_assert(partNumber(VORTEN_Array::UINT8) == VORTEN_Array::kUint8FieldNumber);
static_assert(partNumber(VORTEN_Array::INT8) == VORTEN_Array::kInt8FieldNumber);
static_assert(partNumber(VORTEN_Array::UINT16) == VORTEN_Array::kUint16FieldNumber);
static_assert(partNumber(VORTEN_Array::INT16) == VORTEN_Array::kInt16FieldNumber);
static_assert(partNumber(VORTEN_Array::UINT32) == VORTEN_Array::kUint32FieldNumber);
static_assert(partNumber(VORTEN_Array::INT32) == VORTEN_Array::kInt32FieldNumber);
static_assert(partNumber(VORTEN_Array::UINT64) == VORTEN_Array::kUint64FieldNumber);
static_assert(partNumber(VORTEN_Array::INT64) == VORTEN_Array::kInt64FieldNumber);
static_assert(partNumber(VORTEN_Array::SINGLE) == VORTEN_Array::kSingleFieldNumber);
static_assert(partNumber(VORTEN_Array::DOUBLE) == VORTEN_Array::kQxdoubleFieldNumber);
static_assert(partNumber(VORTEN_Array::LOGICAL) == VORTEN_Array::kLogicalFieldNumber);
static_assert(partNumber(VORTEN_Array::CHAR) == VORTEN_Array::kQxcharFieldNumber);
static_assert(partNumber(VORTEN_Array::STRUCT) == VORTEN_Array::kStructFieldNumber);
static_assert(partNumber(VORTEN_Array::CELL) == VORTEN_Array::kCellFieldNumber);
static_assert(partNumber(VORTEN_Array::SPARSE) == VORTEN_Array::kSparseFieldNumber);
static_assert(typeOfPart(partNumber(VORTEN_Array::STRUCT)) == VORTEN_Array::STRUCT);
static_assert(typeOfPart(partNumber(VORTEN_Array::CELL)) == VORTEN_Array::CELL);

// Classes whose elements are varints on the wire; the others are of fixed width.
template <class Class>
constexpr bool isVarint = WidenedClass<Class> || Class::type == VORTEN_Array::LOGICAL ||
                          Class::type == VORTEN_Array::UINT64 || Class::type == VORTEN_Array::INT64;

}  // namespace hcy
