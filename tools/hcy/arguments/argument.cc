// SPDX-License-Identifier: Apache-2.0

#include "arguments/argument.h"

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "arguments/argument_words.h"
#include "notations/csv.h"
#include "notations/json_array.h"
#include "notations/json_typed_value.h"
#include "notations/json_value.h"
#include "notations/npy.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;
using Classes = std::vector<std::string_view>;

// Adds the classes to the value: int16:1 is {"$int16":1}.
JsonValue typed(JsonValue value, const Classes& classes) {
  for (const std::string_view type : classes) {
    const std::size_t offset = value.offset;
    JsonObject object;
    object.push_back({offset, "$" + std::string(type), std::move(value)});
    value = {offset, std::move(object)};
  }
  return value;
}

Array arrayOfText(std::string_view text) {
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t offset = text.size() - rest.size();
    if (!takeCodePoint(rest)) throw BadText(offset, "the text is not valid UTF-8");
  }
  return {text};
}

Array arrayOfTable(const CsvTable& table, const Classes& classes) {
  if (!table.isOfNumbers) {
    if (!classes.empty()) {
      throw BadText(0, "only a table of numbers can have a class, and this one contains text");
    }
    return cellOf(table);
  }
  if (classes.empty()) return matrixOf(table);
  const std::optional<hcyClassID> type =
      classes.size() == 1 ? elementClass(classes[0]) : std::nullopt;
  return type ? matrixOf(table, type) : arrayFrom(typed(numbersOf(table), classes));
}

std::vector<Array> arraysOfTables(const ArgumentWords& words, std::string_view text,
                                  const ArgumentSettings& settings) {
  const char delimiter = words.notation == Notation::kTsv ? '\t' : settings.delimiter;
  std::vector<CsvTable> tables;
  if (words.choices.empty()) {
    tables.push_back(tableFrom(text, delimiter));
  } else {
    tables = tablesFrom(text, delimiter, words.choices);
  }
  std::vector<Array> arrays;
  arrays.reserve(tables.size());
  for (const CsvTable& table : tables) arrays.push_back(arrayOfTable(table, words.classes));
  return arrays;
}

std::vector<Array> one(Array array) {
  std::vector<Array> arrays;
  arrays.push_back(std::move(array));
  return arrays;
}

// The arrays that the text describes. Throws BadText.
std::vector<Array> arraysOf(const ArgumentWords& words, std::string_view text,
                            const ArgumentSettings& settings) {
  switch (words.notation) {
    case Notation::kCsv:
    case Notation::kTsv:
      return arraysOfTables(words, text, settings);
    case Notation::kText:
      if (!words.classes.empty()) throw BadText(0, "text: cannot have a class before it");
      return one(arrayOfText(text));
    case Notation::kNpy:
      if (!words.classes.empty())
        throw BadText(0, "a .npy file has its own class; remove the one before it");
      return one(arrayOfNpy(text));
    case Notation::kJson:
      break;
  }
  return one(arrayFrom(typed(parseJson(text), words.classes)));
}

// For a file whose ending does not say what it is.
std::string hintForFile(const std::string& file) {
  const std::string source = file == "-" ? file : "@" + printable(file);
  return "\n  (for text, write text:" + source + "; for a table, csv:" + source + ")";
}

std::vector<Array> arraysOfFile(const ArgumentWords& words, const ArgumentSettings& settings) {
  const std::string name = *words.file == "-" ? "standard input" : printable(*words.file);
  const std::string text = contentsOf(*words.file);
  try {
    return arraysOf(words, text, settings);
  } catch (const BadText& problem) {
    if (words.notation == Notation::kNpy) throw BadInput(name + ": " + problem.what());
    const bool isOther =
        words.notation == Notation::kJson && !words.hasNotation && !words.file->ends_with(".json");
    throw BadInput(located(name, text, problem) + (isOther ? hintForFile(*words.file) : ""));
  } catch (const BadInput& problem) {
    throw BadInput(name + ": " + problem.what());
  }
}

std::string listed(const std::vector<std::string_view>& words) {
  std::string list;
  for (const std::string_view word : words) list.append(" ").append(word);
  return list;
}

std::string hintForText(std::string_view word) {
  const std::string text =
      word.find_first_of("'\"\\\n") == std::string_view::npos ? printable(word) : "text";
  return "\n  (for text, write '\"" + text + "\"' or text:" + text + ")";
}

// Hints for common mistakes: words without quotes, and quotes that the shell has removed.
std::string hintFor(std::string_view argument) {
  if (argument.empty() || isMissingNumber(argument)) return {};
  if (isLetter(argument[0])) return hintForText(argument);
  const bool isOpen = argument[0] == '{' || argument[0] == '[';
  const std::size_t word = argument.find_first_not_of("{[ ");
  const bool isBare = isOpen && argument.find('"') == std::string_view::npos &&
                      word != std::string_view::npos && isLetter(argument[word]);
  return isBare
             ? "\n  (write the argument in single quotes, or the shell removes the double quotes)"
             : "";
}

// Refuses the name of a file as a table of one field: the @ was forgotten.
void requireNoFileName(const ArgumentWords& words) {
  if (words.notation != Notation::kCsv && words.notation != Notation::kTsv) return;
  std::error_code unknown;
  const std::string file(words.literal);
  if (!std::filesystem::is_regular_file(file, unknown)) return;
  const std::string notation = words.notation == Notation::kCsv ? "csv" : "tsv";
  throw BadText(
      0, "there is a file of this name; to read it, write " + notation + ":@" + printable(file));
}

std::vector<Array> arraysFromArgument(const std::string& argument, const std::string& name,
                                      const ArgumentSettings& settings, bool& isInputRead) {
  ArgumentWords words;
  try {
    words = argumentWords(argument);
    if (words.file == "-" && std::exchange(isInputRead, true)) {
      throw BadInput(name + ": the standard input can be read only once");
    }
    if (words.file) return arraysOfFile(words, settings);
    if (words.notation == Notation::kNpy) throw BadText(0, "npy: must be followed by @FILE or -");
    requireNoFileName(words);
    return arraysOf(words, words.literal, settings);
  } catch (const UnknownClass& problem) {
    throw BadInput(located(name, argument, problem) + hintForText(argument) + "\n  classes:" +
                   listed(classWords()) + "\n  notations:" + listed(notationWords()));
  } catch (const BadText& problem) {
    const bool isPlain = words.length == 0 && words.notation == Notation::kJson;
    const BadText moved(problem.offset + words.length, problem.what());
    throw BadInput(located(name, argument, moved) + (isPlain ? hintFor(argument) : ""));
  }
}

}  // namespace

std::vector<hcyclient::Array> arraysFrom(const std::vector<std::string>& arguments,
                                         const ArgumentSettings& settings) {
  std::vector<Array> arrays;
  bool isInputRead = false;
  std::size_t number = 0;
  for (const std::string& argument : arguments) {
    const std::string name = "argument " + std::to_string(++number);
    try {
      std::vector<Array> made = arraysFromArgument(argument, name, settings, isInputRead);
      std::move(made.begin(), made.end(), std::back_inserter(arrays));
    } catch (const std::bad_alloc&) {
      throw BadInput(name + ": not enough memory");
    }
  }
  return arrays;
}

}  // namespace hcy::tools
