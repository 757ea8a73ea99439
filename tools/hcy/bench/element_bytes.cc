// SPDX-License-Identifier: Apache-2.0

#include "bench/element_bytes.h"

#include <cstddef>

namespace hcy::tools {

using hcyclient::Array;

std::uint64_t elementBytes(const Array& array) {
  hcyArray* const handle = array.get();
  const std::uint64_t ofElement = hcyGetElementSize(handle) * (array.isComplex() ? 2 : 1);
  if (array.isSparse()) {
    return hcyGetNzmax(handle) * (ofElement + sizeof(std::size_t)) +
           (array.columns() + 1) * sizeof(std::size_t);
  }
  if (!array.isCell() && !array.isStruct()) return array.size() * ofElement;
  const int fields = hcyGetNumberOfFields(handle);
  if (array.isStruct() && fields == 0) return 0;
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (array.isCell()) bytes += elementBytes(array[i]);
    for (int field = 0; field < fields; ++field) {
      bytes += elementBytes(Array::adopt(hcyGetFieldByNumber(handle, i, field)));
    }
  }
  return bytes;
}

}  // namespace hcy::tools
