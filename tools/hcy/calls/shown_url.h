// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace hcy::tools {

// The URL as it may be shown: printable, and with *** in the place of a password.
std::string shownUrl(std::string_view url);

}  // namespace hcy::tools
