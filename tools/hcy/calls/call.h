// SPDX-License-Identifier: Apache-2.0
//
// hcy call: one call, and its outputs.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Returns the exit status. Throws BadInput, and whatever keeps the call or its outputs from
// arriving.
int call(const Options& options);

}  // namespace hcy::tools
