// SPDX-License-Identifier: Apache-2.0
//
// What stands before the elements in a .npy file.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "notations/element_types.h"

namespace hcy::tools {

// NumPy itself takes no more.
inline constexpr std::size_t kMostNpyDimensions = 32;

struct NpyHeader {
  bool isBigEndian = false;
  char kind = 0;             // as in the type: 'f', 'i', 'u', 'b', 'c', 'U'
  std::size_t itemSize = 0;  // in bytes; of 'U' in characters
  bool isByColumns = false;
  Shape shape;             // as in the file: of no dimension for a single value
  std::size_t length = 0;  // of all that comes before the elements
};

// Throws BadInput if there is no such header, or if its type is one that no class has.
NpyHeader npyHeaderOf(std::string_view bytes);

// The bytes before elements of `type` ("f8") that stand by columns, in the machine's byte order.
std::string npyHeader(std::string_view type, const Shape& shape);

}  // namespace hcy::tools
