// SPDX-License-Identifier: Apache-2.0
//
// Where the output goes.

#pragma once

#include <cstddef>
#include <string_view>

namespace hcy::tools {

bool isTerminal(int descriptor);

// The columns of a terminal, 80 where it does not tell; 0 for what is none.
std::size_t widthOf(int descriptor);

// The lines of a terminal, 24 where it does not tell; 0 for what is none.
std::size_t heightOf(int descriptor);

// Writes to the standard output; throws std::system_error when it cannot be written.
void print(std::string_view text);

}  // namespace hcy::tools
