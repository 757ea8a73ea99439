// SPDX-License-Identifier: Apache-2.0
//
// An integer without a class becomes a double, which must not change it.

#pragma once

#include <cstddef>
#include <string_view>

#include "notations/json_value.h"

namespace hcy::tools {

// Throws BadText, with what to write instead, if the number is written as an integer that a double
// cannot hold exactly.
void requireExactInteger(std::string_view number, std::size_t offset);

// The same for a field of a table. Only a table of numbers can have a class before it.
void requireExactField(std::string_view number, std::size_t offset, bool isOfNumbers);

// requireExactInteger for all numbers in the value.
void requireExactIntegers(const JsonValue& value);

}  // namespace hcy::tools
