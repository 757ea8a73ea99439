// SPDX-License-Identifier: Apache-2.0
//
// Arrays from JSON, as docs/command-line.md describes.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string_view>
#include <vector>

#include "notations/json_value.h"

namespace hcy::tools {

// Throws BadText.
hcyclient::Array arrayFrom(const JsonValue& value);

// The names of classes: after the dollar sign of a typed value, and in front of an argument.
const std::vector<std::string_view>& typeNames();

}  // namespace hcy::tools
