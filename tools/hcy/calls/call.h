// SPDX-License-Identifier: Apache-2.0
//
// hcy call: one call, and its outputs.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Returns the exit status. Throws BadInput, and as the library does if the call fails.
int call(const Options& options);

}  // namespace hcy::tools
