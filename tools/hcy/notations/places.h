// SPDX-License-Identifier: Apache-2.0
//
// Names of outputs and of their elements.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <span>
#include <string>

namespace hcy::tools {

// "ans" if there is one output, otherwise "out 1" and so on.
std::string outputName(std::size_t index, std::size_t count);

// The dimensions: at least two, as the arrays of a reply may have only one.
hcyclient::Shape shapeOf(const hcyclient::Array& array);

// "2-by-3".
std::string shapeText(std::span<const std::size_t> shape);

// The zero-based subscripts of an element, "(0, 2)". If the array has very many dimensions, its
// linear index, "(4)": the subscripts of all elements could be far longer than the elements.
std::string placeText(std::size_t index, std::span<const std::size_t> shape);

}  // namespace hcy::tools
