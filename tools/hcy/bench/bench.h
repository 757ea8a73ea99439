// SPDX-License-Identifier: Apache-2.0
//
// hcy bench: the same call over and over.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Returns the exit status: that of the first failure, if calls failed. Throws BadInput, and what
// the library throws when it does not start.
int bench(const Options& options);

}  // namespace hcy::tools
