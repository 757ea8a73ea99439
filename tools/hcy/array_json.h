// SPDX-License-Identifier: Apache-2.0
//
// JSON from arrays, which arrayFrom() reads back as the same array.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// On one line. Throws hcyclient::UsageError for what a reply holds and no array can: fewer elements
// of a cell than its dimensions say, two fields of one name, a name that is not UTF-8.
std::string toJson(const hcyclient::Array& array);

}  // namespace hcy::tools
