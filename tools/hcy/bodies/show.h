// SPDX-License-Identifier: Apache-2.0
//
// hcy show and hcy encode: bodies of requests and replies.

#pragma once

#include <string>

#include "settings/options.h"

namespace hcy::tools {

// The body of a request or reply as JSON that names its kind. Throws BadInput if it is neither, or
// not of the kind that `body` requests.
std::string jsonOfBody(const std::string& bytes, Body body);

// Shows the arrays in a body, or its fields with --schema. The arrays of a reply are printed one
// per line, as a call prints them with --json, and those of a request as one list, as --each reads
// it. An error in a reply is shown as a call shows it. Returns the exit status. Throws BadInput and
// IncompleteOutput.
int show(const Options& options);

// hcy encode: writes the body of a request. Returns the exit status. Throws BadInput, and
// std::system_error if the body cannot be written.
int encode(const Options& options);

}  // namespace hcy::tools
