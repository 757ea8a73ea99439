// SPDX-License-Identifier: Apache-2.0
//
// Arrays as comma-separated values.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// A line for each row of a matrix of real numbers, texts or both; of a struct, a line of its
// fields' names and one for each element, or for each element of its fields if the struct is alone.
// Truths are 1 and 0. Text is in quotes where it would be read as something else. Throws NoNotation
// for what is no table. The array is whole.
std::string csvOf(const hcyclient::Array& array, char delimiter);

}  // namespace hcy::tools
