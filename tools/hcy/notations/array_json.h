// SPDX-License-Identifier: Apache-2.0
//
// JSON from arrays, which arrayFrom() reads back as the same array.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcy::tools {

// On one line. The array is whole, as requireWhole() finds out. Throws hcyclient::UsageError for
// what JSON cannot hold: two fields of one name, or a name that is not UTF-8.
std::string toJson(const hcyclient::Array& array);

}  // namespace hcy::tools
