// SPDX-License-Identifier: Apache-2.0

#include "calls/outputs.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "notations/array_json.h"
#include "notations/csv_text.h"
#include "notations/no_notation.h"
#include "notations/npy.h"
#include "notations/places.h"
#include "notations/raw_text.h"
#include "output/display.h"
#include "output/terminal.h"
#include "text/file_replacement.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;
namespace fs = std::filesystem;

constexpr std::array<std::pair<std::string_view, Form>, 5> kEndings = {{{"json", Form::kJson},
                                                                        {"csv", Form::kCsv},
                                                                        {"tsv", Form::kTsv},
                                                                        {"npy", Form::kNpy},
                                                                        {"txt", Form::kRaw}}};

std::optional<Form> formOf(const std::string& file) {
  if (isStandardOutput(file)) return Form::kDisplay;
  for (const auto& [ending, form] : kEndings) {
    if (hasEnding(file, ending)) return form;
  }
  return std::nullopt;
}

// Refuses two names of one file. The standard output, a pipe or a device can take several outputs.
void requireDifferent(const std::vector<std::string>& files) {
  std::vector<fs::path> seen;
  for (const std::string& file : files) {
    std::error_code unknown;
    const fs::path path = fs::weakly_canonical(fs::absolute(file, unknown), unknown);
    const bool isOther = isStandardOutput(file) ||
                         (fs::exists(file, unknown) && !fs::is_regular_file(file, unknown));
    if (!isOther && std::find(seen.begin(), seen.end(), path) != seen.end()) {
      throw BadInput("--output: " + printable(file) + " is given for two outputs");
    }
    seen.push_back(path);
  }
}

// Lines that stay free for the command and the next prompt.
constexpr std::size_t kOtherLines = 2;
constexpr std::size_t kFewestLines = 8;

// All outputs for a person to read; on a terminal, as much as it can show at once.
std::string displayed(const std::vector<Array>& outputs, const OutputSettings& settings) {
  const std::size_t height = settings.isFolded ? heightOf(STDOUT_FILENO) : 0;
  const std::size_t lines =
      height == 0 ? 0 : std::max(height, kFewestLines + kOtherLines) - kOtherLines;
  return displayAll(outputs, settings.width.value_or(widthOf(STDOUT_FILENO)), lines);
}

std::string textOf(const Array& output, Form form, char delimiter) {
  switch (form) {
    case Form::kJson:
      return toJson(output) + "\n";
    case Form::kRaw:
      return rawText(output);
    case Form::kCsv:
      return csvOf(output, delimiter);
    case Form::kTsv:
      return csvOf(output, '\t');
    case Form::kNpy:
      return npyOf(output);
    case Form::kDisplay:
      break;
  }
  throw std::logic_error("outputs are displayed together");
}

// One of several outputs; NoNotation names it.
std::string formed(const std::vector<Array>& outputs, std::size_t i, Form form,
                   const OutputSettings& settings) {
  const std::string name = outputName(i, outputs.size());
  if (form == Form::kDisplay) {
    return display(name, outputs[i], {settings.width.value_or(widthOf(STDOUT_FILENO))});
  }
  try {
    return textOf(outputs[i], form, settings.delimiter);
  } catch (const NoNotation& problem) {
    throw NoNotation(name + ": " + problem.what() + "; use --json instead");
  }
}

// Tables are separated by an empty line.
std::string formedAll(const std::vector<Array>& outputs, Form form,
                      const OutputSettings& settings) {
  if (form == Form::kDisplay) return displayed(outputs, settings);
  const bool isTable = form == Form::kCsv || form == Form::kTsv;
  std::string all;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    if (isTable && i > 0) all += '\n';
    all += formed(outputs, i, form, settings);
  }
  return all;
}

}  // namespace

void requireOutputs(const OutputSettings& settings, std::size_t count) {
  const std::size_t files = settings.files.size();
  if (files == 0) return;
  if (files != 1 && files != count) {
    throw BadInput("--output is given " + std::to_string(files) + " times for " +
                   std::to_string(count) + (count == 1 ? " output" : " outputs"));
  }
  requireDifferent(settings.files);
  for (const std::string& file : settings.files) {
    const std::optional<Form> form = settings.form ? settings.form : formOf(file);
    if (!form) {
      throw BadInput("--output: " + printable(file) +
                     " must end in .json, .csv, .tsv, .npy or .txt");
    }
    if (form == Form::kNpy && count != files) {
      throw BadInput("--output: a .npy file can hold only one output; give a file for each");
    }
    if (!isStandardOutput(file)) requireWritable(file);
  }
}

void showOutputs(const std::vector<hcyclient::Array>& outputs, const OutputSettings& settings) {
  if (settings.files.empty()) {
    const Form form = settings.form.value_or(Form::kDisplay);
    return printText(formedAll(outputs, form, settings));
  }
  std::vector<std::string> contents;
  for (std::size_t i = 0; i < settings.files.size(); ++i) {
    const Form form = settings.form ? *settings.form : *formOf(settings.files[i]);
    contents.push_back(settings.files.size() == 1 ? formedAll(outputs, form, settings)
                                                  : formed(outputs, i, form, settings));
  }
  // All are written before the first one is replaced.
  std::vector<FileReplacement> written;
  std::string printed;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    if (isStandardOutput(settings.files[i])) {
      printed += contents[i];
    } else {
      written.emplace_back(settings.files[i], contents[i]);
    }
  }
  for (FileReplacement& file : written) file.commit();
  if (!printed.empty()) printText(printed);
}

}  // namespace hcy::tools
