// SPDX-License-Identifier: Apache-2.0
//
// Arrays as comma-separated values.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// A line for each row of a matrix of real numbers, strings or both. For a struct, a line with the
// field names and one for each element; for a 1-by-1 struct, one for each element of its fields.
// True is 1 and false is 0. A string that would be read as something else is quoted. Throws
// NoNotation if the array is not a table. The array must be complete.
std::string csvOf(const hcyclient::Array& array, char delimiter);

}  // namespace hcy::tools
