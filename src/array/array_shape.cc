// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "array/array_handle.h"
#include "array/array_maker.h"
#include "wire/checked_size.h"
#include "wire/element_count.h"

using hcy::messageOf;
using hcy::proxyOf;

namespace {

size_t dimension(const hcyArray* array, int which) {
  const auto& dimensions = messageOf(array).dimension();
  return which < dimensions.size() ? dimensions[which] : 0;
}

// Gives the array storage for its dimensions. Where memory for that cannot be had its callers bring
// the old ones back; dimensions that are too large stay written.
void fitStorage(const hcyArray* array) {
  proxyOf(array).resize(hcy::checkedSize(hcy::elementCount(messageOf(array))));
}

void setDimension(hcyArray* array, int which, size_t value) {
  if (which >= messageOf(array).dimension_size()) return;
  std::uint64_t& stored = (*messageOf(array).mutable_dimension())[which];
  const std::uint64_t old = std::exchange(stored, value);
  try {
    fitStorage(array);
  } catch (const std::bad_alloc&) {
    stored = old;
    throw;
  }
}

void setDimensions(hcyArray* array, const size_t* dims, size_t ndim) {
  if (ndim == 0) throw std::invalid_argument("Number of dimensions must be greater than zero.");
  const std::vector<std::uint64_t> shape = hcy::shapeOf(ndim, dims);
  google::protobuf::RepeatedField<std::uint64_t> dimensions(shape.begin(), shape.end());
  auto& stored = *messageOf(array).mutable_dimension();
  stored.Swap(&dimensions);
  try {
    fitStorage(array);
  } catch (const std::bad_alloc&) {
    stored.Swap(&dimensions);
    throw;
  }
}

}  // namespace

size_t hcyGetM(const hcyArray* array) { return dimension(array, 0); }

size_t hcyGetN(const hcyArray* array) { return dimension(array, 1); }

size_t hcyGetNumberOfDimensions(const hcyArray* array) {
  return static_cast<size_t>(messageOf(array).dimension_size());
}

const size_t* hcyGetDimensions(const hcyArray* array) {
  const auto& dimensions = messageOf(array).dimension();
  return dimensions.empty() ? nullptr : reinterpret_cast<const size_t*>(dimensions.data());
}

void hcySetM(hcyArray* array, size_t m) { setDimension(array, 0, m); }

void hcySetN(hcyArray* array, size_t n) { setDimension(array, 1, n); }

int hcySetDimensions(hcyArray* array, const size_t* dims, size_t ndim) {
  try {
    setDimensions(array, dims, ndim);
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
