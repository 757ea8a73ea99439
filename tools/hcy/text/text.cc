// SPDX-License-Identifier: Apache-2.0

#include "text/text.h"

#include <algorithm>
#include <iterator>

namespace hcy::tools {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool isSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
constexpr bool isLeading(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool isTrailing(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

struct Range {
  char32_t first, last;
};

template <std::size_t count>
bool isIn(const Range (&ranges)[count], char32_t codePoint) {
  return std::any_of(std::begin(ranges), std::end(ranges), [codePoint](const Range& range) {
    return codePoint >= range.first && codePoint <= range.last;
  });
}

// Combining marks and joiners.
constexpr Range kNoColumn[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},
                               {0x0610, 0x061A}, {0x064B, 0x065F}, {0x1AB0, 0x1AFF},
                               {0x1DC0, 0x1DFF}, {0x200B, 0x200D}, {0x20D0, 0x20FF},
                               {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};
constexpr Range kTwoColumns[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},  {0xA960, 0xA97C}, {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

std::size_t columnsOf(char32_t codePoint) {
  if (isIn(kNoColumn, codePoint)) return 0;
  return isIn(kTwoColumns, codePoint) ? 2 : 1;
}

void appendQuoted(std::string& out, char32_t codePoint) {
  if (codePoint == '"' || codePoint == '\\') out += '\\';
  if (isControl(codePoint)) return appendEscape(out, codePoint);
  appendUtf8(out, codePoint);
}

// Removes a code point from the units and returns it; an unpaired surrogate is returned as it is.
char32_t takeFromUnits(std::u16string_view& units) {
  const char32_t unit = units.front();
  units.remove_prefix(1);
  if (!isLeading(unit) || units.empty() || !isTrailing(units.front())) return unit;
  const char32_t trailing = units.front();
  units.remove_prefix(1);
  return 0x10000 + ((unit - 0xD800) << 10) + (trailing - 0xDC00);
}

}  // namespace

std::optional<char32_t> takeCodePoint(std::string_view& text) {
  const auto byteAt = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byteAt(0);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  bool isWellFormed = lead < 0x80 || (lead >= 0xC2 && lead <= 0xF4 && text.size() >= length);
  char32_t codePoint = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; isWellFormed && i < length; ++i) {
    isWellFormed = (byteAt(i) & 0xC0U) == 0x80;
    codePoint = codePoint << 6 | (byteAt(i) & 0x3FU);
  }
  isWellFormed = isWellFormed && codePoint >= smallest[length] && codePoint <= 0x10FFFF &&
                 !isSurrogate(codePoint);
  text.remove_prefix(isWellFormed ? length : 1);
  return isWellFormed ? std::optional(codePoint) : std::nullopt;
}

void appendUtf8(std::string& out, char32_t codePoint) {
  const auto append = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (codePoint < 0x80) return append(codePoint);
  if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
  } else {
    if (codePoint < 0x10000) {
      append(0xE0 | codePoint >> 12);
    } else {
      append(0xF0 | codePoint >> 18);
      append(0x80 | (codePoint >> 12 & 0x3F));
    }
    append(0x80 | (codePoint >> 6 & 0x3F));
  }
  append(0x80 | (codePoint & 0x3F));
}

void appendEscape(std::string& out, char32_t unit) {
  constexpr std::string_view digits = "0123456789abcdef";
  if (unit == '\n') {
    out += "\\n";
  } else if (unit == '\t') {
    out += "\\t";
  } else if (unit == '\r') {
    out += "\\r";
  } else {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out += digits[unit >> shift & 0xF];
  }
}

bool isControl(char32_t codePoint) {
  constexpr Range controls[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x061C, 0x061C},
                                {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
  return isIn(controls, codePoint);
}

std::optional<std::string> quotedJson(std::string_view utf8) {
  std::string out = "\"";
  while (!utf8.empty()) {
    const std::optional<char32_t> codePoint = takeCodePoint(utf8);
    if (!codePoint) return std::nullopt;
    appendQuoted(out, *codePoint);
  }
  return out += '"';
}

std::string quotedValid(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) appendQuoted(out, takeCodePoint(text).value_or(kReplacement));
  return out += '"';
}

std::optional<std::string> quotedJson(std::u16string_view units) {
  std::string out = "\"";
  while (!units.empty()) {
    const char32_t codePoint = takeFromUnits(units);
    if (isSurrogate(codePoint)) return std::nullopt;
    appendQuoted(out, codePoint);
  }
  return out += '"';
}

std::string quotedForDisplay(std::u16string_view units) {
  std::string out = "\"";
  while (!units.empty()) {
    const char32_t codePoint = takeFromUnits(units);
    isSurrogate(codePoint) ? appendEscape(out, codePoint) : appendQuoted(out, codePoint);
  }
  return out += '"';
}

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const char32_t codePoint = takeCodePoint(text).value_or(kReplacement);
    isControl(codePoint) ? appendEscape(out, codePoint) : appendUtf8(out, codePoint);
  }
  return out;
}

std::string printableLines(std::string_view text, std::size_t indent) {
  std::string out;
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    out += printable(text.substr(0, end)) + "\n" + std::string(indent, ' ');
    text.remove_prefix(end + 1);
  }
  return out + printable(text);
}

std::string printableText(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const char32_t codePoint = takeCodePoint(text).value_or(kReplacement);
    const bool isLayout = codePoint == '\n' || codePoint == '\t';
    isControl(codePoint) && !isLayout ? appendEscape(out, codePoint) : appendUtf8(out, codePoint);
  }
  return out;
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = isLetter(c) ? static_cast<char>(c | 0x20) : c;
  return lower;
}

bool hasEnding(std::string_view file, std::string_view ending) {
  const std::size_t size = ending.size() + 1;
  if (file.size() < size) return false;
  file.remove_prefix(file.size() - size);
  return file[0] == '.' && lowered(file.substr(1)) == ending;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) columns += columnsOf(takeCodePoint(text).value_or(kReplacement));
  return columns;
}

std::string cutToWidth(std::string_view text, std::size_t columns) {
  if (columns == 0 || displayWidth(text) <= columns) return std::string(text);
  std::string_view rest = text;
  std::size_t kept = 0;
  for (std::size_t used = 0;;) {
    used += columnsOf(takeCodePoint(rest).value_or(kReplacement));
    if (used > columns - 1) break;
    kept = text.size() - rest.size();
  }
  return std::string(text.substr(0, kept)) + "…";
}

}  // namespace hcy::tools
