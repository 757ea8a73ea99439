// SPDX-License-Identifier: Apache-2.0
//
// An array as a text that tells all that can be asked about it.

#pragma once

#include <string>

#include "hcy/hcyclient.h"

namespace hcy::abi {

// "none" for null.
std::string describe(const hcyArray* array);

}  // namespace hcy::abi
