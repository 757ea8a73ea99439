// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hcy::tools {

// "; did you mean WORD?" for the known word that differs least, or nothing if none is near.
std::string suggestionFor(std::string_view word, const std::vector<std::string_view>& known);

}  // namespace hcy::tools
