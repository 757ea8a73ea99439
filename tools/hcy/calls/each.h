// SPDX-License-Identifier: Apache-2.0
//
// hcy call --each: a call for each line of a file.

#pragma once

#include "settings/options.h"

namespace hcy::tools {

// A line is a JSON list of the arguments that follow those of the command line. Prints a line for
// each call in the order of the lines: its output, a list of its outputs if there is not exactly
// one, or null if the call failed; the failure is shown on standard error. Returns the exit status
// of the first failure. Throws BadInput, and std::system_error if the results cannot be written.
int callEach(const Options& options);

}  // namespace hcy::tools
