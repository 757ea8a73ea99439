// SPDX-License-Identifier: Apache-2.0
//
// Arrays for people to read.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "output/table.h"

namespace hcy::tools {

// Name, class and shape on a line, followed by a single number or string, or by the elements below
// in aligned columns. The array must have passed requireWhole().
std::string display(std::string_view name, const hcyclient::Array& array, const DisplaySize& size);

// The same for all outputs of a call, in at most `lines` lines; 0 for no limit. As many rows,
// elements, fields and pages are left out at every level as this needs. If that is not enough,
// lines in the middle are left out.
std::string displayAll(const std::vector<hcyclient::Array>& outputs, std::size_t width,
                       std::size_t lines);

}  // namespace hcy::tools
