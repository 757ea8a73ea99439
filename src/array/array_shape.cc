// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <new>
#include <vector>

#include "array/array_handle.h"
#include "array/array_maker.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"

using hcy::dataOf;
using hcy::DimensionList;
using hcy::proxyOf;

namespace {

size_t dimension(const hcyArray* array, size_t which) {
  const DimensionList& dimensions = dataOf(array).dimensions;
  return which < dimensions.size() ? dimensions[which] : 0;
}

using Shape = std::vector<std::uint64_t>;

void write(const Shape& shape, DimensionList& dimensions) {
  dimensions.assign(shape.begin(), shape.end());
}

// Gives the array storage for its new dimensions. If memory runs out, restoreOld() restores the old
// ones; dimensions that are too large stay written.
template <class RestoreOld>
void fitStorage(hcyArray* array, RestoreOld restoreOld) {
  try {
    proxyOf(array).resize(hcy::checkedSize(hcy::elementCount(dataOf(array))));
  } catch (const std::bad_alloc&) {
    restoreOld();
    throw;
  }
}

void setShape(hcyArray* array, const Shape& shape) {
  DimensionList& dimensions = dataOf(array).dimensions;
  const Shape old(dimensions.begin(), dimensions.end());
  write(shape, dimensions);
  // Needs no memory: there was room for them.
  fitStorage(array, [&] { write(old, dimensions); });
}

void setDimension(hcyArray* array, size_t which, size_t value) {
  DimensionList& dimensions = dataOf(array).dimensions;
  if (which >= dimensions.size()) return;
  const std::uint64_t old = dimensions[which];
  dimensions[which] = value;
  fitStorage(array, [&] { dimensions[which] = old; });
}

}  // namespace

size_t hcyGetM(const hcyArray* array) { return dimension(array, 0); }

size_t hcyGetN(const hcyArray* array) { return dimension(array, 1); }

size_t hcyGetNumberOfDimensions(const hcyArray* array) { return dataOf(array).dimensions.size(); }

const size_t* hcyGetDimensions(const hcyArray* array) {
  const DimensionList& dimensions = dataOf(array).dimensions;
  return dimensions.empty() ? nullptr : reinterpret_cast<const size_t*>(dimensions.data());
}

void hcySetM(hcyArray* array, size_t m) { setDimension(array, 0, m); }

void hcySetN(hcyArray* array, size_t n) { setDimension(array, 1, n); }

int hcySetDimensions(hcyArray* array, const size_t* dims, size_t ndim) {
  if (ndim == 0) return 1;
  try {
    setShape(array, hcy::shapeOf(ndim, dims));
    return 0;
  } catch (const std::exception&) {
    return 1;
  }
}

size_t hcyCalcSingleSubscript(const hcyArray* array, size_t nsubs, const size_t* subs) {
  const size_t* const dimensions = hcyGetDimensions(array);
  const size_t used = std::min(nsubs, hcyGetNumberOfDimensions(array));
  size_t index = 0;
  size_t stride = 1;
  for (size_t i = 0; i < used; ++i) {
    index += subs[i] * stride;
    stride *= dimensions[i];
  }
  return index;
}
