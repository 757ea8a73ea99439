// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace hcy {

// The code point at `position`, which is moved behind it. Any surrogate is combined with the unit
// after it, whatever halves the two are; a surrogate at the end throws std::runtime_error
// "Invalid UTF-16 data".
std::uint32_t decodeUtf16(const char16_t*& position, const char16_t* end);

// The bytes that the text takes in UTF-8; throws as decodeUtf16.
std::size_t utf8Length(std::u16string_view text);

// Writes the text as UTF-8 and returns the end of what was written; `out` has room for
// utf8Length(text) bytes.
char* writeUtf8(std::u16string_view text, char* out);

}  // namespace hcy
