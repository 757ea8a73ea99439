// SPDX-License-Identifier: Apache-2.0
//
// Arrays for a person to read.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>

namespace hcy::tools {

// Name, class and shape on a line, with a single number or text behind them; otherwise the elements
// below, in aligned columns. Lines are cut to `width` columns; 0 for no limit. The array is whole,
// as requireWhole() finds out.
std::string display(std::string_view name, const hcyclient::Array& array, std::size_t width);

}  // namespace hcy::tools
