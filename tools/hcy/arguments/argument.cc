// SPDX-License-Identifier: Apache-2.0

#include "arguments/argument.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

#include "notations/csv.h"
#include "notations/exact_integers.h"
#include "notations/json_array.h"
#include "notations/json_value.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;

// The classes before an argument, the innermost first, and how long they are.
struct Prefix {
  std::vector<std::string_view> types;
  std::size_t length = 0;
};

Prefix prefixOf(std::string_view argument) {
  Prefix prefix;
  for (;;) {
    const std::string_view rest = argument.substr(prefix.length);
    const std::size_t colon = rest.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789");
    if (colon == 0 || colon == std::string_view::npos || rest[colon] != ':') return prefix;
    const std::string_view type = rest.substr(0, colon);
    if (std::find(typeNames().begin(), typeNames().end(), type) == typeNames().end()) {
      throw BadText(prefix.length, "there is no class " + std::string(type));
    }
    // No more than one around complex or sparse.
    if (prefix.types.size() == 2) throw BadText(prefix.length, "a class too many");
    prefix.types.insert(prefix.types.begin(), type);
    prefix.length += colon + 1;
  }
}

// Puts the classes around the value: int16:1 is {"$int16":1}.
JsonValue typed(JsonValue value, const Prefix& prefix) {
  for (const std::string_view type : prefix.types) {
    const std::size_t offset = value.offset;
    JsonObject object;
    object.push_back({offset, "$" + std::string(type), std::move(value)});
    value = {offset, std::move(object)};
  }
  return value;
}

bool isCsv(std::string_view file) {
  constexpr std::string_view ending = ".csv";
  return file.size() >= ending.size() &&
         std::equal(ending.begin(), ending.end(), file.end() - ending.size(), [](char a, char b) {
           return a == b || (b >= 'A' && b <= 'Z' && b - 'A' + 'a' == a);
         });
}

Array arrayOfText(const Prefix& prefix, std::string_view text) {
  return arrayFrom(typed(parseJson(text), prefix));
}

Array arrayOfCsv(const Prefix& prefix, std::string_view text) {
  const CsvTable table = tableFrom(text);
  if (table.isOfNumbers) {
    const JsonValue numbers = numbersOf(table);
    if (!prefix.types.empty()) return arrayFrom(typed(numbers, prefix));
    requireExactIntegers(numbers);
    return arrayFrom(typed(numbers, Prefix{{"double"}}));
  }
  if (!prefix.types.empty()) throw BadText(0, "a class can only stand before numbers");
  return cellOf(table);
}

Array arrayOfFile(const Prefix& prefix, const std::string& file) {
  const std::string text = contentsOf(file);
  try {
    return isCsv(file) ? arrayOfCsv(prefix, text) : arrayOfText(prefix, text);
  } catch (const BadText& problem) {
    throw BadInput(located(file == "-" ? "standard input" : printable(file), text, problem));
  }
}

// Words without quotes are the slip to expect.
std::string hintFor(std::string_view argument) {
  const bool isWord = !argument.empty() &&
                      ((argument[0] | 0x20) >= 'a' && (argument[0] | 0x20) <= 'z') &&
                      argument != "NaN" && argument != "Infinity";
  return isWord ? "\n  (a text stands in quotes of JSON: '\"text\"')" : "";
}

Array arrayFromArgument(const std::string& argument, const std::string& name, bool& isInputRead) {
  Prefix prefix;
  try {
    prefix = prefixOf(argument);
    const std::string_view rest = std::string_view(argument).substr(prefix.length);
    if (rest == "@") throw BadText(1, "the name of a file is missing");
    const std::string_view file = rest.starts_with('@') ? rest.substr(1) : rest;
    if (file == "-" && std::exchange(isInputRead, true)) {
      throw BadInput(name + ": the standard input has been read already");
    }
    if (file == "-" || rest.starts_with('@')) return arrayOfFile(prefix, std::string(file));
    return arrayOfText(prefix, rest);
  } catch (const BadText& problem) {
    const bool isInPrefix = prefix.length == 0;
    const BadText moved(problem.offset + prefix.length, problem.what());
    throw BadInput(located(name, argument, moved) + (isInPrefix ? hintFor(argument) : ""));
  }
}

}  // namespace

std::vector<hcyclient::Array> arraysFrom(const std::vector<std::string>& arguments) {
  std::vector<Array> arrays;
  bool isInputRead = false;
  for (const std::string& argument : arguments) {
    const std::string name = "argument " + std::to_string(arrays.size() + 1);
    try {
      arrays.push_back(arrayFromArgument(argument, name, isInputRead));
    } catch (const std::bad_alloc&) {
      throw BadInput(name + ": there is not enough memory for it");
    }
  }
  return arrays;
}

}  // namespace hcy::tools
