// SPDX-License-Identifier: Apache-2.0
//
// Arguments taken out of arrays that may be anything, and outputs put into new ones. Whatever
// takes an argument raises a FunctionError if the array is not what it should be; `name` is how
// the message calls it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "function_table.h"

namespace hcy::server {

using Doubles = google::protobuf::RepeatedField<double>;
using CodeUnits = google::protobuf::RepeatedField<std::uint32_t>;

std::string describeShape(const std::vector<std::uint64_t>& shape);

// Two dimensions at least; ones behind the second are left out.
std::vector<std::uint64_t> shapeOf(const Array& array, const std::string& name);

// The product of the dimensions, or an error if that is no number of elements.
std::uint64_t elementCount(const std::vector<std::uint64_t>& shape, const std::string& name);

// The class is that one, and the array is column-major.
void requireClass(const Array& array, client::VORTEN_Array::QXType type, const std::string& name);

// Both lists are as long as the dimensions tell; the imaginary one is empty if the array is real.
struct DoubleElements {
  Doubles& real;
  Doubles& imaginary;
};
DoubleElements doubleElements(Array& array, const std::string& name);
Doubles& realElements(Array& array, const std::string& name);
double realScalar(Array& array, const std::string& name);

// Any shape.
CodeUnits& codeUnits(Array& array, const std::string& name);
// One row, or an empty array.
CodeUnits& rowOfCodeUnits(Array& array, const char* name);
std::string utf8Text(Array& array, const char* name);

// Makes a new array of doubles, all zero.
Doubles& makeDoubles(Array& array, std::initializer_list<std::size_t> dimensions);
void makeScalar(Array& array, double value);
void setDimensions(Array& array, std::initializer_list<std::size_t> dimensions);

}  // namespace hcy::server
