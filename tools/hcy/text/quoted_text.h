// SPDX-License-Identifier: Apache-2.0
//
// Text in double quotes, inside which two quotes stand for one.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hcy::tools {

// The offset after the closing quote of the text that begins at `start`, or npos if it is missing.
inline std::size_t endOfQuoted(std::string_view text, std::size_t start) {
  for (std::size_t position = start + 1;;) {
    const std::size_t quote = text.find('"', position);
    if (quote == std::string_view::npos) return quote;
    if (!text.substr(quote + 1).starts_with('"')) return quote + 1;
    position = quote + 2;
  }
}

// What the quotes contain.
inline std::string unquoted(std::string_view quoted) {
  std::string text;
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    text += quoted[i];
    if (quoted[i] == '"') ++i;
  }
  return text;
}

}  // namespace hcy::tools
