// SPDX-License-Identifier: Apache-2.0
//
// What the user can do about a failure of the connection.

#pragma once

#include <string>
#include <string_view>

#include "settings/options.h"

namespace hcy::tools {

// The advice for the message of a failed call, on a line of its own: a newline and the hint, or
// nothing for a message that is not known. It names the host, the port, the time limit or the
// option that the failure is about. The text of the message itself is that of libcurl or of the
// library, and is left to the caller.
std::string transportHint(std::string_view message, const Options& options);

}  // namespace hcy::tools
