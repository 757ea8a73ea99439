// SPDX-License-Identifier: Apache-2.0
//
// Arrays for people to read.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>

#include "output/table.h"

namespace hcy::tools {

// Name, class and shape on a line, followed by a single number or string, or by the elements below
// in aligned columns. The array must have passed requireWhole().
std::string display(std::string_view name, const hcyclient::Array& array, const DisplaySize& size);

}  // namespace hcy::tools
