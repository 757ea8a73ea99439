// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace hcy::fuzz {

// Ends the program where the library does with the body of a reply what it must not: reads what is
// not there, answers otherwise than a body says that is well-formed, or sends its outputs otherwise
// than the message library would.
void checkReply(const std::string& body);

}  // namespace hcy::fuzz
