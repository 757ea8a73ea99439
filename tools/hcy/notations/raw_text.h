// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// Text and single numbers without quotes and class, a char matrix with one row on each line, and
// anything else as JSON. Ends with a line end. The array must be complete.
std::string rawText(const hcyclient::Array& array);

}  // namespace hcy::tools
