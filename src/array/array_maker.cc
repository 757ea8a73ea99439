// SPDX-License-Identifier: Apache-2.0

#include "array/array_maker.h"

#include <array>

#include "array/array_proxy_builder.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"

namespace hcy {

std::vector<std::uint64_t> shapeOf(std::size_t ndim, const std::size_t* dims) {
  if (ndim == 0) return {0, 0};
  if (ndim == 1) return {dims[0], 1};
  return {dims, dims + ndim};
}

ArrayHandle makeArray(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                      std::uint64_t slotsPerElement) {
  const std::uint64_t count = saturatingProduct(elementCount(dimensions), slotsPerElement);
  if (type != VORTEN_Array::SPARSE) checkedSize(count);
  return ArrayProxyBuilder::create(type, dimensions, complex, count);
}

ArrayHandle makeMatrix(VORTEN_Array::QXType type, std::size_t m, std::size_t n, bool complex,
                       std::uint64_t slotsPerElement) {
  return makeArray(type, std::array<std::uint64_t, 2>{m, n}, complex, slotsPerElement);
}

}  // namespace hcy
