// SPDX-License-Identifier: Apache-2.0
//
// Reads the pass phrase of a private key. It never comes from the command line, which other users
// of the machine can read.

#pragma once

#include <string>

#include "settings/secret.h"

namespace hcy::tools {

// The first line of a file. Throws BadInput.
Secret passPhraseOfFile(const std::string& file);

// Asks on the terminal of the process, without echo. Throws BadInput if there is no terminal, or if
// nothing was typed.
Secret passPhraseOfTerminal();

}  // namespace hcy::tools
