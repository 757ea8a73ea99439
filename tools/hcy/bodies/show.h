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

// Shows the arrays in a body, or with --schema its fields: those of a reply on a line each, as a
// call prints them with --json, those of a request in one list, as --each reads it, and the error
// of a reply as a call tells it. Returns the exit status. Throws BadInput, and IncompleteOutput.
int show(const Options& options);

// hcy encode: writes the body that a call sends. Returns the exit status. Throws BadInput, and what
// keeps the body from being written.
int encode(const Options& options);

}  // namespace hcy::tools
