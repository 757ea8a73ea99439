// SPDX-License-Identifier: Apache-2.0

#include "notations/exact_integers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

#include "text/source_text.h"

namespace hcy::tools {
namespace {

// The largest double has 309 digits.
constexpr std::size_t kMostDigits = 310;

template <class Integer>
bool isOf(std::string_view number) {
  Integer value = 0;
  return std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc();
}

// Whether the nearest double has the same digits.
bool isExact(std::string_view number) {
  const bool isNegative = number.starts_with('-');
  number.remove_prefix(isNegative ? 1 : 0);
  constexpr std::size_t digitsOfAll = 15;
  if (number.size() <= digitsOfAll) return true;
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size() - 1));
  double nearest = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), nearest);
  if (read.ec != std::errc()) return true;  // too large, which is refused elsewhere
  std::array<char, kMostDigits> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), nearest,
                                 std::chars_format::fixed, 0);
  return number == std::string_view(digits.data(), end.ptr);
}

bool isInexact(std::string_view number) {
  return number.find_first_not_of("-0123456789") == std::string_view::npos && !isExact(number);
}

std::string typeFor(std::string_view number) {
  return isOf<std::int64_t>(number) ? "int64" : isOf<std::uint64_t>(number) ? "uint64" : "double";
}

constexpr std::string_view kProblem = "this integer cannot be stored exactly as a double; ";

}  // namespace

void requireExactInteger(std::string_view number, std::size_t offset) {
  if (!isInexact(number)) return;
  const std::string type = typeFor(number);
  const std::string digits = number.size() <= 20 ? std::string(number) : "…";
  std::string problem(kProblem);
  problem.append("write ").append(type).append(":").append(digits);
  problem.append(" (inside JSON {\"$").append(type).append("\":").append(digits).append("})");
  problem += type == "double" ? "" : ", or double:" + digits;
  problem += " for the nearest double";
  throw BadText(offset, problem);
}

void requireExactField(std::string_view number, std::size_t offset, bool isOfNumbers) {
  if (!isInexact(number)) return;
  std::string problem(kProblem);
  if (isOfNumbers) {
    const std::string type = typeFor(number);
    problem += "write " + type + ":@FILE";
    problem += type == "double" ? "" : ", or double:@FILE";
    problem += " for the nearest double";
  } else {
    problem += "put it in double quotes to read it as text";
  }
  throw BadText(offset, problem);
}

void requireExactIntegers(const JsonValue& value) {
  if (const auto* const number = value.as<JsonNumber>()) {
    requireExactInteger(number->token, value.offset);
  } else if (const auto* const list = value.as<JsonList>()) {
    for (const JsonValue& item : *list) requireExactIntegers(item);
  } else if (const auto* const object = value.as<JsonObject>()) {
    for (const JsonMember& member : *object) requireExactIntegers(member.value);
  }
}

}  // namespace hcy::tools
