// SPDX-License-Identifier: Apache-2.0
//
// The one list of the array classes. Everything that differs from class to class is written
// here or derived from it.

#pragma once

#include <cstddef>
#include <cstdint>

// HCY_ARRAY_CLASSES(row) expands row(type, name, storage, field, Message, Element, is_numeric) for
// each class in the order of the wire's QXType numbers, from 0, without a gap:
//   type        name of the class in QXType
//   name        name of the class for the caller; a sparse array has the class of its values
//   storage     how the elements lie on the wire (see ElementStorage)
//   field       the typed sub-message's field in VORTEN_Array
//   Message     the typed sub-message's type in VORTEN_Array
//   Element     what one element is to the caller, behind a data pointer
//   is_numeric  whether the class is a numeric one; numeric classes may be complex
// clang-format off
#define HCY_ARRAY_CLASSES(row)                                              \
  row(UINT8,   "uint8",   String,  uint8,    Uint8,   std::uint8_t,  true)  \
  row(INT8,    "int8",    String,  int8,     Int8,    std::int8_t,   true)  \
  row(UINT16,  "uint16",  Widened, uint16,   Uint16,  std::uint16_t, true)  \
  row(INT16,   "int16",   Widened, int16,    Int16,   std::int16_t,  true)  \
  row(UINT32,  "uint32",  Packed,  uint32,   Uint32,  std::uint32_t, true)  \
  row(INT32,   "int32",   Packed,  int32,    Int32,   std::int32_t,  true)  \
  row(UINT64,  "uint64",  Packed,  uint64,   Uint64,  std::uint64_t, true)  \
  row(INT64,   "int64",   Packed,  int64,    Int64,   std::int64_t,  true)  \
  row(SINGLE,  "single",  Packed,  single,   Single,  float,         true)  \
  row(DOUBLE,  "double",  Packed,  qxdouble, Double,  double,        true)  \
  row(LOGICAL, "logical", Packed,  logical,  Logical, bool,          false) \
  row(CHAR,    "char",    Widened, qxchar,   Char,    char16_t,      false) \
  row(STRUCT,  "struct",  Arrays,  struct_,  Struct,  void*,         false) \
  row(CELL,    "cell",    Arrays,  cell,     Cell,    void*,         false) \
  row(SPARSE,  "",        Sparse,  sparse,   Sparse,  void,          false)
// clang-format on

namespace hcy {

// How the elements of a class lie in its typed sub-message.
enum class ElementStorage {
  String,   // a byte string
  Packed,   // a repeated field of the caller's own element type
  Widened,  // a repeated field of 32-bit values that hold the caller's 16-bit elements
  Arrays,   // a repeated field of arrays
  Sparse    // values in a sub-message of their own, beside the row indices and column starts
};

}  // namespace hcy
