// SPDX-License-Identifier: Apache-2.0
//
// The terminal and the standard output.

#pragma once

#include <cstddef>
#include <string_view>

namespace hcy::tools {

bool isTerminal(int descriptor);

// The columns of a terminal, 80 if they are not known; 0 if the descriptor is not a terminal.
std::size_t widthOf(int descriptor);

// The lines of a terminal, 24 if they are not known; 0 if the descriptor is not a terminal.
std::size_t heightOf(int descriptor);

// Whether a name after --output means the standard output.
bool isStandardOutput(std::string_view file);

// Writes to the standard output; throws std::system_error if that fails.
void print(std::string_view text);

// The same for text that contains what a server sent. A terminal gets it with control characters
// escaped, except line ends and tabs; anything else gets its bytes.
void printText(std::string_view text);

}  // namespace hcy::tools
