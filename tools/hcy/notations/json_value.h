// SPDX-License-Identifier: Apache-2.0
//
// JSON as it was written: with the offset of each value, the members of objects in their order, and
// the digits of numbers.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hcy::tools {

struct JsonMember;
struct JsonValue;

struct JsonNumber {
  std::string_view token;  // in the text that was parsed
};
using JsonList = std::vector<JsonValue>;
using JsonObject = std::vector<JsonMember>;

struct JsonValue {
  std::size_t offset = 0;  // of its first character
  std::variant<std::nullptr_t, bool, JsonNumber, std::string, JsonList, JsonObject> content;

  template <class T>
  const T* as() const {
    return std::get_if<T>(&content);
  }
};

struct JsonMember {
  std::size_t offset = 0;  // of its name
  std::string name;
  JsonValue value;
};

// Deeper than any array that a reply can hold.
inline constexpr std::size_t kDeepestJson = 256;

// Whether the word is NaN, Inf or Infinity, in letters of either case: JSON has no such numbers.
bool isMissingNumber(std::string_view word);

// Parses one JSON value (RFC 8259). Throws BadText, also if something follows the value. The value
// must not outlive the text.
JsonValue parseJson(std::string_view text);

}  // namespace hcy::tools
