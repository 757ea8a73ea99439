// SPDX-License-Identifier: Apache-2.0

#include "arguments/argument_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "notations/json_array.h"
#include "text/quoted_text.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr std::array<std::pair<std::string_view, Notation>, 5> kNotations = {
    {{"json", Notation::kJson},
     {"text", Notation::kText},
     {"csv", Notation::kCsv},
     {"tsv", Notation::kTsv},
     {"npy", Notation::kNpy}}};

// Classes that NumPy gives another name.
struct NumpyName {
  std::string_view name;
  std::string_view type;
  std::string_view outer = {};  // the class before it, if any
};
constexpr std::array<NumpyName, 5> kNumpyNames = {{{"float64", "double"},
                                                   {"float32", "single"},
                                                   {"bool", "logical"},
                                                   {"complex64", "complex", "single"},
                                                   {"complex128", "complex", "double"}}};

// The classes that a word names, the innermost first; none if it is not a class.
std::vector<std::string_view> classesNamed(std::string_view word) {
  for (const NumpyName& known : kNumpyNames) {
    if (word != known.name) continue;
    if (known.outer.empty()) return {known.type};
    return {known.type, known.outer};
  }
  const auto found = std::find(typeNames().begin(), typeNames().end(), word);
  if (found == typeNames().end()) return {};
  return {*found};
}

[[noreturn]] void refuseWord(std::string_view word, std::size_t offset) {
  std::vector<std::string_view> words = classWords();
  words.insert(words.end(), notationWords().begin(), notationWords().end());
  throw UnknownClass(offset, "there is no class " + std::string(word) + suggestionFor(word, words));
}

// Double:1 is not JSON: the name of a class is in lower case.
void requireLowerCase(std::string_view rest, std::size_t offset) {
  const std::size_t colon = rest.find(':');
  if (colon == std::string_view::npos || !isLetter(rest[0])) return;
  const std::string lower = lowered(rest.substr(0, colon));
  const bool isNotation = std::any_of(kNotations.begin(), kNotations.end(),
                                      [&](const auto& known) { return known.first == lower; });
  if (lower == rest.substr(0, colon) || (!isNotation && classesNamed(lower).empty())) return;
  throw UnknownClass(offset, "there is no class " + std::string(rest.substr(0, colon)) +
                                 "; did you mean " + lower + "?");
}

void takePrefix(std::string_view argument, ArgumentWords& words) {
  while (!words.hasNotation) {
    const std::string_view rest = argument.substr(words.length);
    const std::size_t colon = rest.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789");
    if (colon == 0 || colon == std::string_view::npos || rest[colon] != ':') {
      return requireLowerCase(rest, words.length);
    }
    const std::string_view word = rest.substr(0, colon);
    const auto notation = std::find_if(kNotations.begin(), kNotations.end(),
                                       [word](const auto& known) { return known.first == word; });
    const std::vector<std::string_view> classes = classesNamed(word);
    if (notation != kNotations.end()) {
      words.notation = notation->second;
      words.hasNotation = true;
    } else if (classes.empty()) {
      refuseWord(word, words.length);
    } else {
      if (words.classes.size() + classes.size() > 2) {
        throw BadText(words.length, "too many classes: only complex or sparse can follow a class");
      }
      words.classes.insert(words.classes.begin(), classes.begin(), classes.end());
    }
    words.length += colon + 1;
  }
}

Notation notationOf(std::string_view file) {
  for (const auto& [ending, notation] : kNotations) {
    if (ending != "text" && hasEnding(file, ending)) return notation;
  }
  return Notation::kJson;
}

bool isTable(Notation notation) { return notation == Notation::kCsv || notation == Notation::kTsv; }

// Reads [x,"a, b",0;y]: a choice of columns for each array.
class ColumnReader {
 public:
  ColumnReader(std::string_view text, std::size_t offset) : text_(text), offset_(offset) {}

  std::vector<CsvColumns> read() {
    std::vector<CsvColumns> choices(1);
    position_ = 1;
    for (;;) {
      choices.back().push_back(column());
      const char end = position_ < text_.size() ? text_[position_++] : '\0';
      if (end == ']' && position_ == text_.size()) return choices;
      if (end == ';') {
        choices.emplace_back();
      } else if (end != ',') {
        throw BadText(offset_ + position_ - 1,
                      "expected a comma, a semicolon or the closing bracket");
      }
    }
  }

 private:
  CsvColumn column() {
    if (text_[position_] == '"') return {quoted()};
    const std::size_t end = text_.find_first_of(",;]", position_);
    const std::string_view name = text_.substr(position_, end - position_);
    if (name.empty()) throw BadText(offset_ + position_, "a column name is missing");
    position_ = end;
    std::size_t index = 0;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), index);
    if (read.ec == std::errc() && read.ptr == name.data() + name.size()) return {{}, index};
    return {std::string(name)};
  }

  std::string quoted() {
    const std::size_t start = position_;
    position_ = endOfQuoted(text_, start);
    if (position_ == std::string_view::npos) {
      throw BadText(offset_ + start, "the closing quote is missing");
    }
    return unquoted(text_.substr(start, position_ - start));
  }

  std::string_view text_;
  std::size_t offset_;
  std::size_t position_ = 0;
};

}  // namespace

const std::vector<std::string_view>& classWords() {
  static const std::vector<std::string_view> words = [] {
    std::vector<std::string_view> all = typeNames();
    for (const NumpyName& known : kNumpyNames) all.push_back(known.name);
    return all;
  }();
  return words;
}

const std::vector<std::string_view>& notationWords() {
  static const std::vector<std::string_view> words = [] {
    std::vector<std::string_view> all;
    all.reserve(kNotations.size());
    for (const auto& [name, notation] : kNotations) all.push_back(name);
    return all;
  }();
  return words;
}

ArgumentWords argumentWords(std::string_view argument) {
  ArgumentWords words;
  takePrefix(argument, words);
  std::string_view rest = argument.substr(words.length);
  if (rest == "@") throw BadText(words.length + 1, "a file name must follow @");
  const bool isStandardInput = rest == "-" || rest.starts_with("-[");
  if (!rest.starts_with('@') && !isStandardInput) {
    words.literal = rest;
    return words;
  }
  if (rest.starts_with('@')) rest.remove_prefix(1);
  const std::size_t bracket = rest.ends_with(']') ? rest.find('[') : std::string_view::npos;
  const std::string_view file = rest.substr(0, bracket);
  const Notation notation = words.hasNotation ? words.notation : notationOf(file);
  if (bracket != std::string_view::npos && isTable(notation)) {
    const auto offset = static_cast<std::size_t>(rest.data() - argument.data()) + bracket;
    words.choices = ColumnReader(rest.substr(bracket), offset).read();
    words.notation = notation;
    words.file = expandedHome(file);
  } else if (rest.starts_with("-[")) {
    words.literal = rest;  // not a table: the parser reports it
  } else {
    words.notation = words.hasNotation ? words.notation : notationOf(rest);
    words.file = expandedHome(rest);
  }
  return words;
}

}  // namespace hcy::tools
