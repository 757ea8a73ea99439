// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>

#include "wire/array_data.h"

namespace hcy {

// The number of stored elements that the index arrays of a sparse array describe: a
// compressed-column matrix of the array's dimensions. Nothing when they do not: column starts are
// missing, falling, or beyond the row indices, or a row is outside.
std::optional<std::size_t> describedElements(const ArrayData& array);

}  // namespace hcy
