// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>

#include "settings/options.h"

namespace hcy::tools {

// Throws BadInput with the name of a file for TLS that is missing, is a directory, or cannot be
// read.
void requireReadableFiles(const Settings& settings);

// A configuration with these settings, the timeout rounded up to whole seconds. Asks for the pass
// phrase if the settings say so. Throws BadInput.
hcyclient::Config configFrom(const hcyclient::Library& library, const Settings& settings);

}  // namespace hcy::tools
