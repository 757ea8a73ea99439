// SPDX-License-Identifier: Apache-2.0
//
// Which server a call goes to.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// Makes a URL of what the user gave in its place: @SERVER/PATH or @SERVER PATH, with the settings
// of that server where the command line has none, or a path on the server of $HCY_SERVER or of the
// configuration file. What has a scheme stays as it is. Throws BadInput.
void resolveTarget(Options& options);

}  // namespace hcy::tools
