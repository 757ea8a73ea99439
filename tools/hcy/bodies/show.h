// SPDX-License-Identifier: Apache-2.0
//
// hcy show: what went over the wire.

#pragma once

#include <string>

#include "settings/options.h"

namespace hcy::tools {

// The body of a request or reply as JSON that says which of them it is. Throws BadInput when it is
// neither, or not what it is said to be.
std::string jsonOfBody(const std::string& bytes, Body body);

// Returns the exit status. Throws BadInput.
int show(const Options& options);

}  // namespace hcy::tools
