// SPDX-License-Identifier: Apache-2.0
//
// JSON from arrays, which arrayFrom() reads back as the same array.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// On one line. The array must have passed requireWhole(). Throws hcyclient::UsageError if JSON
// cannot hold it: two fields have the same name, or a name is not UTF-8.
std::string toJson(const hcyclient::Array& array);

}  // namespace hcy::tools
