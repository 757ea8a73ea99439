// SPDX-License-Identifier: Apache-2.0
//
// hcy bench: measures repeated calls.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Returns the exit status, which is that of the first failed call. Throws BadInput, and as the
// library does if it cannot start.
int bench(const Options& options);

}  // namespace hcy::tools
