// SPDX-License-Identifier: Apache-2.0
//
// The arguments of a call, as they are written on the command line.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// Each argument is JSON, a file (@data.json, @data.csv) or the standard input (-), with classes
// before it or not (int16:[1,2]). Throws BadInput, which says of which argument and where.
std::vector<hcyclient::Array> arraysFrom(const std::vector<std::string>& arguments);

}  // namespace hcy::tools
