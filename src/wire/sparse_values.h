// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wire/array_class_traits.h"

namespace hcy {

// The values of a sparse array, made present; allocated before the message is touched.
inline VORTEN_Array::Double& sparseDoubles(VORTEN_Array::Sparse& sparse) {
  if (!sparse.has_qxsparsedouble()) sparse.set_allocated_qxsparsedouble(new VORTEN_Array::Double());
  return *sparse.mutable_qxsparsedouble();
}

inline VORTEN_Array::Logical& sparseLogicals(VORTEN_Array::Sparse& sparse) {
  if (!sparse.has_logical()) sparse.set_allocated_logical(new VORTEN_Array::Logical());
  return *sparse.mutable_logical();
}

}  // namespace hcy
