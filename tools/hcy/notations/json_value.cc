// SPDX-License-Identifier: Apache-2.0

#include "notations/json_value.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

// Iterates over the text and records how far the parser has come.
class Reader {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Reader(const char* position, const char** reached) : position_(position), reached_(reached) {}
  reference operator*() const { return *position_; }
  Reader& operator++() {
    *reached_ = ++position_;
    return *this;
  }
  bool operator==(const Reader& other) const { return position_ == other.position_; }
  bool operator!=(const Reader& other) const { return position_ != other.position_; }

 private:
  const char* position_;
  const char** reached_;
};

bool belongsToNumber(char c) {
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// The start of the number that ends at `end`.
std::size_t startOfNumber(std::string_view text, std::size_t end) {
  while (end > 0 && belongsToNumber(text[end - 1])) --end;
  return end;
}

// The start of the string whose closing quote is before `end`. A quote is escaped if an odd number
// of backslashes precedes it.
std::size_t startOfText(std::string_view text, std::size_t end) {
  for (std::size_t quote = end - 1; quote > 0;) {
    quote = text.rfind('"', quote - 1);
    if (quote == std::string_view::npos) return 0;
    std::size_t first = quote;
    while (first > 0 && text[first - 1] == '\\') --first;
    if ((quote - first) % 2 == 0) return quote;
  }
  return 0;
}

// The message of nlohmann's parser without its name, the place and the text that it read last.
std::string problemOf(const std::string& what) {
  const std::size_t start = what.find(" - ");
  if (start == std::string::npos) {
    const std::size_t overflow = what.find("number overflow");
    return overflow == std::string::npos ? "bad JSON" : "a number is too large for a double";
  }
  std::string problem = what.substr(start + 3);
  const std::size_t last = problem.find("; last read: ");
  if (last != std::string::npos) {
    const std::size_t expected = problem.rfind("; expected ");
    problem = problem.substr(0, last) +
              (expected == std::string::npos || expected < last ? "" : problem.substr(expected));
  }
  return "bad JSON: " + problem;
}

bool isSameWord(std::string_view word, std::string_view lower) {
  return std::equal(word.begin(), word.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a | 0x20) == b; });
}

// Refuses a number that JSON does not have, and says what to write instead. The parser stopped at
// `offset`: at the first letter, or at the second one of `nan`, which begins as `null` does.
void requireNoMissingNumber(std::string_view text, std::size_t offset) {
  std::size_t start = offset;
  while (start > 0 && isLetter(text[start - 1])) --start;
  std::size_t end = start;
  while (end < text.size() && isLetter(text[end])) ++end;
  const std::string_view word = text.substr(start, end - start);
  if (!isMissingNumber(word)) return;
  const bool isNegative = start > 0 && text[start - 1] == '-';
  const bool isNan = isSameWord(word, "nan");
  const std::string name = isNan ? "NaN" : isNegative ? "-Infinity" : "Infinity";
  throw BadText(start - (isNegative ? 1 : 0),
                "JSON has no " + name + R"(; write it in quotes, with a class: double:[1,")" +
                    name + R"("], or inside JSON {"$double":[1,")" + name + R"("]})");
}

// Refuses a number such as .5 or +5, and says what to write instead. `offset` is in it.
void requireDigitFirst(std::string_view text, std::size_t offset) {
  const std::size_t start = startOfNumber(text, offset);
  std::size_t end = start;
  while (end < text.size() && belongsToNumber(text[end])) ++end;
  std::string_view number = text.substr(start, end - start);
  const bool isNegative = number.starts_with('-');
  const bool isSigned = isNegative || number.starts_with('+');
  if (isSigned) number.remove_prefix(1);
  const bool isFraction = number.starts_with('.');
  if (!isFraction && (!isSigned || isNegative)) return;
  const std::string instead =
      (isNegative ? "-" : "") + std::string(isFraction ? "0" : "") + std::string(number);
  if (!nlohmann::json::accept(instead)) return;
  throw BadText(start, std::string("in JSON, a number cannot begin with ") +
                           (isFraction ? "a decimal point" : "a plus sign") + "; write " + instead);
}

// Builds the tree from what the parser meets.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  Builder(std::string_view text, const char* const& reached) : text_(text), reached_(reached) {}

  JsonValue take() { return std::move(root_); }

  bool null() override { return add(4, nullptr); }
  bool boolean(bool value) override { return add(value ? 4 : 5, value); }
  bool number_integer(number_integer_t) override { return addNumber(); }
  bool number_unsigned(number_unsigned_t) override { return addNumber(); }
  bool number_float(number_float_t, const string_t&) override { return addNumber(); }
  bool string(string_t& value) override {
    return add(offset() - startOfText(text_, offset()), std::move(value));
  }
  bool binary(binary_t&) override { return false; }  // JSON has none
  bool start_object(std::size_t) override { return open(JsonObject()); }
  bool start_array(std::size_t) override { return open(JsonList()); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    std::get<JsonObject>(open_.back()->content)
        .push_back({startOfText(text_, offset()), std::move(name), {}});
    return true;
  }

  bool end_object() override {
    const JsonObject& members = std::get<JsonObject>(open_.back()->content);
    std::vector<const JsonMember*> sorted(members.size());
    std::transform(members.begin(), members.end(), sorted.begin(),
                   [](const JsonMember& member) { return &member; });
    const auto isBefore = [](const JsonMember* a, const JsonMember* b) {
      return a->name < b->name;
    };
    std::stable_sort(sorted.begin(), sorted.end(), isBefore);
    const auto twice = std::adjacent_find(
        sorted.begin(), sorted.end(),
        [](const JsonMember* a, const JsonMember* b) { return a->name == b->name; });
    if (twice != sorted.end()) {
      throw BadText((*std::next(twice))->offset,
                    "this object has the name " + printable((*twice)->name) + " twice");
    }
    return close();
  }

  bool parse_error(std::size_t end, const std::string&,
                   const nlohmann::json::exception& problem) override {
    const std::string what = problemOf(problem.what());
    requireNoStrayComma(end);
    requireDigitFirst(text_, std::min(end, text_.size()));
    if (end > text_.size()) throw BadText(text_.size(), what);  // it looked for more
    if (belongsToNumber(text_[end - 1])) throw BadText(startOfNumber(text_, end), what);
    if (what.find("unexpected string literal") != std::string::npos) {
      throw BadText(startOfText(text_, end), what);
    }
    requireNoMissingNumber(text_, end - 1);
    throw BadText(end - 1, what);
  }

 private:
  // The parser reports the bracket, but the comma before it is the mistake.
  void requireNoStrayComma(std::size_t end) const {
    if (end == 0 || end > text_.size() || (text_[end - 1] != '}' && text_[end - 1] != ']')) return;
    const std::size_t comma = text_.substr(0, end - 1).find_last_not_of(" \t\r\n");
    if (comma == std::string_view::npos || text_[comma] != ',') return;
    throw BadText(comma, std::string("bad JSON: trailing comma before '") + text_[end - 1] + "'");
  }

  // The offset after the last character that the parser has read.
  std::size_t offset() const { return static_cast<std::size_t>(reached_ - text_.data()); }

  JsonValue& place() {
    if (open_.empty()) return root_;
    if (auto* const list = std::get_if<JsonList>(&open_.back()->content)) {
      return list->emplace_back();
    }
    return std::get<JsonObject>(open_.back()->content).back().value;
  }

  template <class Content>
  bool add(std::size_t length, Content content) {
    JsonValue& value = place();
    value.offset = offset() - length;
    value.content = std::move(content);
    return true;
  }

  // The parser has read the character after a number, unless the text ended there.
  bool addNumber() {
    std::size_t end = offset();
    if (!belongsToNumber(text_[end - 1])) --end;
    const std::size_t start = startOfNumber(text_, end);
    return add(offset() - start, JsonNumber{text_.substr(start, end - start)});
  }

  template <class Content>
  bool open(Content content) {
    if (open_.size() == kDeepestJson) {
      throw BadText(offset() - 1, "nested deeper than " + std::to_string(kDeepestJson) + " levels");
    }
    JsonValue& value = place();
    value.offset = offset() - 1;
    value.content = std::move(content);
    open_.push_back(&value);
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  std::string_view text_;
  const char* const& reached_;
  JsonValue root_;
  // Each is the last element of the one before, so none of them moves.
  std::vector<JsonValue*> open_;
};

}  // namespace

bool isMissingNumber(std::string_view word) {
  return isSameWord(word, "nan") || isSameWord(word, "inf") || isSameWord(word, "infinity");
}

JsonValue parseJson(std::string_view text) {
  // The parser would treat it as the end.
  const std::size_t nul = text.find('\0');
  if (nul != std::string_view::npos) throw BadText(nul, "bad JSON: NUL character");
  // Versions of the parser differ in what they report for an empty string.
  if (text.empty()) {
    throw BadText(0, "bad JSON: unexpected end of input; expected '[', '{', or a literal");
  }
  const char* reached = text.data();
  Builder builder(text, reached);
  const char* unused = nullptr;
  nlohmann::json::sax_parse(Reader(text.data(), &reached),
                            Reader(text.data() + text.size(), &unused), &builder);
  return builder.take();
}

}  // namespace hcy::tools
