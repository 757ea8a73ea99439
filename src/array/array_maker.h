// SPDX-License-Identifier: Apache-2.0
//
// What all creation functions go through.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "array/array_handle.h"

namespace hcy {

// A shape given as (ndim, dims): no dimension is 0-by-0, one is a column.
std::vector<std::uint64_t> shapeOf(std::size_t ndim, const std::size_t* dims);

// A new array. A struct has `slotsPerElement` fields. Throws positive overflow for a dimension or
// a number of slots over 2147483647 (the elements of a sparse array are not stored one by one, so
// their number is free), before anything is allocated.
ArrayHandle makeArray(VORTEN_Array::QXType type, Dimensions dimensions, bool complex,
                      std::uint64_t slotsPerElement = 1);

ArrayHandle makeMatrix(VORTEN_Array::QXType type, std::size_t m, std::size_t n, bool complex,
                       std::uint64_t slotsPerElement = 1);

}  // namespace hcy
