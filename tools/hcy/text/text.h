// SPDX-License-Identifier: Apache-2.0
//
// UTF-8, as a terminal shows it and as JSON writes it.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hcy::tools {

// Removes the first code point from the text, which must not be empty, and returns it. Returns
// nothing for bytes that are not well-formed UTF-8 (RFC 3629), which are removed one by one.
std::optional<char32_t> takeCodePoint(std::string_view& text);

void appendUtf8(std::string& out, char32_t codePoint);

// Appends `\n`, `\u001b` or the like.
void appendEscape(std::string& out, char32_t unit);

// Whether a terminal could treat it as a command, or show what follows in another order.
bool isControl(char32_t codePoint);

// The text as a JSON string; nothing if it is not UTF-8.
std::optional<std::string> quotedJson(std::string_view utf8);

// The same for any text: bytes that are not UTF-8 are replaced.
std::string quotedValid(std::string_view text);

// The same from UTF-16; nothing if a surrogate is unpaired.
std::optional<std::string> quotedJson(std::u16string_view units);

// In quotes for display: an unpaired surrogate is escaped.
std::string quotedForDisplay(std::u16string_view units);

// Safe for a terminal: control characters are escaped, bytes that are not UTF-8 are replaced.
std::string printable(std::string_view text);

// The same for several lines, all but the first one indented.
std::string printableLines(std::string_view text, std::size_t indent);

// The same for whole text, whose line ends and tabs stay.
std::string printableText(std::string_view text);

// The width of the text in columns of a terminal.
std::size_t displayWidth(std::string_view text);

// A to Z and a to z.
constexpr bool isLetter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }

// A to Z become a to z.
std::string lowered(std::string_view text);

// Whether the name of a file ends in a dot and this ending, in letters of either case. The ending
// is in lower case.
bool hasEnding(std::string_view file, std::string_view ending);

// The text cut to a number of columns, with "…" in the last one if something is missing. 0 means no
// limit.
std::string cutToWidth(std::string_view text, std::size_t columns);

}  // namespace hcy::tools
