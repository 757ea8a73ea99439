// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace hcy::tools {

// Throws BadInput unless the URL begins with http:// or https://, in letters of either case, and is
// well-formed: no spaces, and a port that can exist.
void requireHttp(std::string_view url);

}  // namespace hcy::tools
