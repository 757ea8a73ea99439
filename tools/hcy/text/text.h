// SPDX-License-Identifier: Apache-2.0
//
// UTF-8, as a terminal shows it and as JSON writes it.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hcy::tools {

// Takes the first code point off the text, which must not be empty; what is not well-formed
// (RFC 3629) is taken off byte by byte, as nothing.
std::optional<char32_t> takeCodePoint(std::string_view& text);

void appendUtf8(std::string& out, char32_t codePoint);

// Appends `\n`, `\u001b` or the like.
void appendEscape(std::string& out, char32_t unit);

// Whether a terminal could take it for a command, or show what follows in another order.
bool isControl(char32_t codePoint);

// The text in quotes as JSON; nothing when it is not UTF-8.
std::optional<std::string> quotedJson(std::string_view utf8);

// The same of any text: what is not UTF-8 is replaced.
std::string quotedValid(std::string_view text);

// The same from UTF-16; nothing when a surrogate stands alone.
std::optional<std::string> quotedJson(std::u16string_view units);

// In quotes for a person: a surrogate that stands alone is shown as JSON would escape it.
std::string quotedForDisplay(std::u16string_view units);

// Made fit for a terminal: control characters are escaped, bytes that are not UTF-8 replaced.
std::string printable(std::string_view text);

// The same for a text of several lines, those behind the first one indented.
std::string printableLines(std::string_view text, std::size_t indent);

// How many columns of a terminal the text takes.
std::size_t displayWidth(std::string_view text);

// The text cut to a number of columns, the last of which shows that something is missing. No
// columns means no limit.
std::string cutToWidth(std::string_view text, std::size_t columns);

}  // namespace hcy::tools
