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

// The arrays in a body: those of a reply one per line, as a call prints them with --json, those of
// a request as one list, as --each reads it. Throws as jsonOfBody(), IncompleteOutput, and
// hcyclient::FunctionError if the reply is an error.
std::string arraysOfBody(const std::string& bytes, Body body);

// How many outputs a request asks for. Throws as jsonOfBody().
int nargoutOf(const std::string& request);

// Shows the arrays in a body, or its fields with --schema; of a recorded call, both bodies, and
// path and status with them. An error in a reply is shown as a call shows it. Returns the exit
// status. Throws BadInput and IncompleteOutput.
int show(const Options& options);

// hcy encode: writes the body of a request. Returns the exit status. Throws BadInput, and
// std::system_error if the body cannot be written.
int encode(const Options& options);

}  // namespace hcy::tools
