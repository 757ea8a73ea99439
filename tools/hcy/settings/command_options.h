// SPDX-License-Identifier: Apache-2.0
//
// The commands of hcy and their options, for the parser.

#pragma once

#include <CLI/CLI.hpp>

#include "settings/options.h"

namespace hcy::tools {

// Adds all commands, which fill in the options.
void addCommands(CLI::App& app, Options& options);

}  // namespace hcy::tools
