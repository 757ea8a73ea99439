// SPDX-License-Identifier: Apache-2.0
//
// The server that a call goes to.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Replaces what the user gave by a URL: @SERVER/PATH or @SERVER PATH, with the settings of that
// server unless the command line has them, or a path on the server of $HCY_SERVER or of the
// configuration file. A URL with a scheme is left unchanged. Throws BadInput.
void resolveTarget(Options& options);

}  // namespace hcy::tools
