// SPDX-License-Identifier: Apache-2.0
//
// The header of a .npy file.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "notations/element_types.h"

namespace hcy::tools {

// The limit of NumPy 2; that of NumPy 1 is 32.
inline constexpr std::size_t kMostNpyDimensions = 64;

struct NpyHeader {
  bool isBigEndian = false;
  char kind = 0;             // as in the type: 'f', 'i', 'u', 'b', 'c', 'S', 'U'
  std::size_t itemSize = 0;  // in bytes; of 'U' in characters
  bool isByColumns = false;
  Shape shape;             // as in the file: of no dimension for a single value
  std::size_t length = 0;  // of everything before the elements
};

// Throws BadInput if there is no such header, or if no class corresponds to its type.
NpyHeader npyHeaderOf(std::string_view bytes);

// The header for elements of `type` ("f8") in column-major order and the machine's byte order.
std::string npyHeader(std::string_view type, const Shape& shape);

}  // namespace hcy::tools
