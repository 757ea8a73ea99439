// SPDX-License-Identifier: Apache-2.0
//
// Reads the pass phrase of a private key. It never comes from the command line, which other users
// of the machine can read.

#pragma once

#include <string>

#include "settings/secret.h"
#include "text/source_text.h"

namespace hcy::tools {

// The first line of a file, if it passes the check. Throws BadInput.
Secret passPhraseOfFile(const std::string& file, const FileCheck& check = {});

// Whether the user may be asked for anything: the environment variable HCY_NO_PROMPT is not set, or
// is empty.
bool mayPrompt();

// Reads a pass phrase from the terminal of the process, without echo. Throws BadInput without a
// terminal, after an empty line, or if mayPrompt() is false.
Secret passPhraseOfTerminal();

}  // namespace hcy::tools
