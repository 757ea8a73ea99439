// SPDX-License-Identifier: Apache-2.0

#include "wire/utf16.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace hcy {
namespace {

std::size_t utf8Length(std::uint32_t codePoint) {
  if (codePoint < 0x80) return 1;
  if (codePoint < 0x800) return 2;
  return codePoint < 0x10000 ? 3 : 4;
}

char* writeUtf8(std::uint32_t codePoint, char* out) {
  static constexpr std::uint32_t leads[] = {0x00, 0xC0, 0xE0, 0xF0};
  const std::size_t length = utf8Length(codePoint);
  std::uint32_t shift = 6 * static_cast<std::uint32_t>(length - 1);
  *out++ = static_cast<char>(leads[length - 1] + (codePoint >> shift));
  while (shift != 0) {
    shift -= 6;
    *out++ = static_cast<char>(0x80 + ((codePoint >> shift) & 0x3F));
  }
  return out;
}

// Most text is ASCII, and goes by blocks.
constexpr std::ptrdiff_t kBlock = 64;

bool isAscii(const char16_t* block) {
  unsigned all = 0;
  for (std::ptrdiff_t i = 0; i < kBlock; ++i) all |= block[i];
  return all < 0x80;
}

// Calls useAscii for the blocks of ASCII, and useCodePoint for each code point between them.
template <class UseAscii, class UseCodePoint>
void forEachPart(std::u16string_view text, UseAscii useAscii, UseCodePoint useCodePoint) {
  const char16_t* const end = text.data() + text.size();
  const char16_t* position = text.data();
  while (position != end) {
    if (end - position >= kBlock && isAscii(position)) {
      useAscii(position);
      position += kBlock;
    } else {
      const char16_t* const next = end - position > kBlock ? position + kBlock : end;
      while (position < next) useCodePoint(decodeUtf16(position, end));
    }
  }
}

}  // namespace

std::uint32_t decodeUtf16(const char16_t*& position, const char16_t* end) {
  const std::uint32_t unit = *position++;
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  if (position == end) throw std::runtime_error("Invalid UTF-16 data");
  const std::uint32_t following = *position++;
  return (((unit - 0xD800U) << 10) | (following - 0xDC00U)) + 0x10000U;
}

std::size_t utf8Length(std::u16string_view text) {
  std::size_t length = 0;
  forEachPart(
      text, [&](const char16_t* /*ascii*/) { length += kBlock; },
      [&](std::uint32_t codePoint) { length += utf8Length(codePoint); });
  return length;
}

char* writeUtf8(std::u16string_view text, char* out) {
  forEachPart(
      text,
      [&](const char16_t* ascii) {
        std::transform(ascii, ascii + kBlock, out, [](char16_t unit) { return char(unit); });
        out += kBlock;
      },
      [&](std::uint32_t codePoint) { out = writeUtf8(codePoint, out); });
  return out;
}

}  // namespace hcy
