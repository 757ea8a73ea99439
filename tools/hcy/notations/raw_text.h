// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// Text and single numbers as they are, without quotes and class, the rows of a char matrix on a
// line each; anything else as JSON. Ends with a line end. The array is whole.
std::string rawText(const hcyclient::Array& array);

}  // namespace hcy::tools
