/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file text.hpp
 * @brief UTF-8 and UTF-16. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_TEXT_HPP
#define HCY_CPP_TEXT_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <hcy/cpp/error.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace hcyclient {

namespace detail {

template <class Character>
const Character* notNull(const Character* text) {
  if (text == nullptr) throw UsageError("the string is a null pointer");
  return text;
}

}  // namespace detail

/** @defgroup cpp_texts C++: strings
 *  @brief String parameters for C functions.
 *  @{ */

/** A parameter for a URL or a name: any string converts to it. A std::string and a string literal
 *  are not copied; a std::string_view is. A NUL inside throws UsageError. Use it only as a
 *  parameter: it is valid until the end of the full expression in which it is made. */
class CString {
 public:
  /** Refers to a NUL-terminated string; throws UsageError if it is null. */
  CString(const char* text) : text_(detail::notNull(text)) {}
  /** Refers to a string. */
  CString(const std::string& text) : text_(withoutNul(text).c_str()) {}
  /** Copies a view, which need not end with a NUL. */
  CString(std::string_view text) : copy_(text), text_(withoutNul(copy_).c_str()) {}
  /** Refers to a std::filesystem::path. */
  template <class Path, class = std::enable_if_t<std::is_same_v<
                            decltype(std::declval<const Path&>().native()), const std::string&>>>
  CString(const Path& path) : CString(path.native()) {}
  /** Null is not a string. */
  CString(std::nullptr_t) = delete;
  CString(const CString&) = delete;
  CString& operator=(const CString&) = delete;
  ~CString() = default;

  /** The NUL-terminated string. */
  const char* c_str() const noexcept { return text_; }

 private:
  static const std::string& withoutNul(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw UsageError("the string contains a NUL");
    return text;
  }

  std::string copy_;
  const char* text_;
};

/** @} */

namespace detail {

// Whether all bytes are ASCII, eight at a time.
inline bool isAscii(std::string_view text) {
  std::uint64_t seen = 0;
  std::uint64_t eight = 0;
  std::size_t i = 0;
  for (; text.size() - i >= sizeof eight; i += sizeof eight) {
    std::memcpy(&eight, text.data() + i, sizeof eight);
    seen |= eight;
  }
  for (; i < text.size(); ++i) seen |= static_cast<unsigned char>(text[i]);
  return (seen & 0x8080808080808080U) == 0;
}

// The same for code units, four at a time.
inline bool isAscii(const char16_t* units, std::size_t count) {
  std::uint64_t seen = 0;
  std::uint64_t four = 0;
  std::size_t i = 0;
  for (; count - i >= 4; i += 4) {
    std::memcpy(&four, units + i, sizeof four);
    seen |= four;
  }
  for (; i < count; ++i) seen |= units[i];
  return (seen & 0xFF80FF80FF80FF80U) == 0;
}

// Reads the code point at `position` and moves past it.
inline char32_t nextCodePoint(const char*& position, const char* end) {
  const auto byteAt = [](const char* at) { return static_cast<unsigned char>(*at); };
  const unsigned lead = byteAt(position++);
  if (lead < 0x80) return lead;
  const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
  char32_t codePoint = lead & (0x3FU >> following);
  bool isWellFormed = lead >= 0xC2 && lead <= 0xF4 && end - position >= following;
  for (int i = 0; isWellFormed && i < following; ++i) {
    isWellFormed = (byteAt(position) & 0xC0U) == 0x80;
    codePoint = codePoint << 6 | (byteAt(position++) & 0x3FU);
  }
  if (!isWellFormed || codePoint < smallest[following - 1] || codePoint > 0x10FFFF ||
      (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
    throw UsageError("the string is not valid UTF-8");
  }
  return codePoint;
}

inline std::size_t utf16Length(std::string_view text) {
  if (isAscii(text)) return text.size();
  std::size_t units = 0;
  const char* const end = text.data() + text.size();
  for (const char* position = text.data(); position != end;) {
    units += nextCodePoint(position, end) < 0x10000 ? 1U : 2U;
  }
  return units;
}

// Writes `length` code units, which is what utf16Length() returns for the text.
inline void writeUtf16(std::string_view text, char16_t* out, std::size_t length) {
  // If there are as many units as bytes, all are ASCII.
  if (length == text.size()) {
    std::copy(text.begin(), text.end(), out);
    return;
  }
  const char* const end = text.data() + text.size();
  for (const char* position = text.data(); position != end;) {
    const char32_t codePoint = nextCodePoint(position, end);
    if (codePoint < 0x10000) {
      *out++ = static_cast<char16_t>(codePoint);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
      *out++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
    }
  }
}

inline void appendUtf8(char32_t codePoint, std::string& text) {
  const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
  if (codePoint < 0x80) return append(codePoint);
  if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
  } else {
    if (codePoint < 0x10000) {
      append(0xE0 | codePoint >> 12);
    } else {
      append(0xF0 + (codePoint >> 18));
      append(0x80 | (codePoint >> 12 & 0x3F));
    }
    append(0x80 | (codePoint >> 6 & 0x3F));
  }
  append(0x80 | (codePoint & 0x3F));
}

// Like hcyArrayToString(): a surrogate is combined with the next code unit, whatever that is.
inline std::string utf8Of(const char16_t* unit, std::size_t count) {
  std::string text;
  if (isAscii(unit, count)) {
    text.resize(count);
    std::transform(unit, unit + count, text.begin(),
                   [](char16_t ascii) { return static_cast<char>(ascii); });
    return text;
  }
  text.reserve(count);
  for (const char16_t* const end = unit + count; unit != end;) {
    char32_t codePoint = *unit++;
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
      if (unit == end) throw UsageError("the text ends inside a surrogate pair");
      codePoint = ((codePoint - 0xD800) << 10 | (char32_t{*unit++} - 0xDC00)) + 0x10000;
    }
    appendUtf8(codePoint, text);
  }
  return text;
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_TEXT_HPP
