// SPDX-License-Identifier: Apache-2.0
//
// Arguments that may be anything, taken as what a function needs. Whatever takes one raises a
// FunctionError if the array is not what it should be; `name` is how the message calls it.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>

#include "value.h"

namespace hcy::server {

using hcyclient::Shape;
using hcyclient::Span;

std::string describeShape(const Shape& shape);

// Two dimensions at least; ones behind the second are left out.
Shape shapeOf(const Value& value, const std::string& name);

// Both lists are as long as the dimensions tell; the imaginary one is empty if the array is real.
struct DoubleElements {
  Span<double> real;
  Span<double> imaginary;
};
DoubleElements doubleElements(Value& value, const std::string& name);
double realScalar(Value& value, const std::string& name);

// A sparse matrix of real doubles, whose indices describe one.
const Array& sparseArgument(const Value& value, const char* letter);

// Any shape; valid as long as the array.
std::u16string_view codeUnits(Value& value, const std::string& name);
// One row, or an empty array.
std::u16string_view rowOfCodeUnits(Value& value, const std::string& name);
std::string utf8Text(Value& value, const std::string& name);

}  // namespace hcy::server
