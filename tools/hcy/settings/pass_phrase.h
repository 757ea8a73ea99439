// SPDX-License-Identifier: Apache-2.0
//
// Where the pass phrase of a private key comes from: never from the command line, which others on
// the machine can read.

#pragma once

#include <string>

#include "settings/secret.h"

namespace hcy::tools {

// The first line of a file. Throws BadInput.
Secret passPhraseOfFile(const std::string& file);

// Asks on the terminal of the process, which shows nothing of what is typed. Throws BadInput when
// there is no terminal, or nothing was typed.
Secret passPhraseOfTerminal();

}  // namespace hcy::tools
