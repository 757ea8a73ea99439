// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hcy::tools {

// The known word that is most similar; empty if none is similar enough.
std::string_view nearestWord(std::string_view word, const std::vector<std::string_view>& known);

// "; did you mean WORD?" for that word, or nothing if none is similar enough.
std::string suggestionFor(std::string_view word, const std::vector<std::string_view>& known);

}  // namespace hcy::tools
