// SPDX-License-Identifier: Apache-2.0
//
// Arrays for a person to read.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>

#include "output/table.h"

namespace hcy::tools {

// Name, class and shape on a line, with a single number or text behind them; otherwise the elements
// below, in aligned columns. The array is whole, as requireWhole() finds out.
std::string display(std::string_view name, const hcyclient::Array& array, const DisplaySize& size);

}  // namespace hcy::tools
