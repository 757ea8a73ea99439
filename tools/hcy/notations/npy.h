// SPDX-License-Identifier: Apache-2.0
//
// The binary format of NumPy for one array (.npy, versions 1 to 3).

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>

namespace hcy::tools {

// Integers, float32, float64, bool, complex64 and complex128 of either byte order become the class
// of that name in the same shape, and float16 becomes single. A single string, of type U or (if it
// is ASCII) S, becomes a row of char, a vector of strings a char matrix, and an array of single
// characters a char array of that shape. A vector becomes a column. Allocates memory in proportion
// to the bytes. Throws BadInput without the name of the file.
hcyclient::Array arrayOfNpy(std::string_view bytes);

// The file for an array, in column-major order; a row of char becomes a single string. Throws
// NoNotation if NumPy has no type for the array: it is sparse, a cell, a struct, of complex
// integers, or has more than 64 dimensions. The array must be complete.
std::string npyOf(const hcyclient::Array& array);

}  // namespace hcy::tools
