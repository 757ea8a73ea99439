// SPDX-License-Identifier: Apache-2.0
//
// Comma-separated values (RFC 4180), and those separated by another character.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "notations/json_value.h"

namespace hcy::tools {

struct CsvField {
  std::size_t offset = 0;
  std::string text;
  // The digits in the source, without blanks around them; empty if the field is empty, NA or in
  // quotes.
  std::string_view number = {};
  bool isNumber = false;
};

// A column, by its name in the first line or by its number, counted from 0.
struct CsvColumn {
  std::string name;
  std::optional<std::size_t> index = {};
};
using CsvColumns = std::vector<CsvColumn>;

struct CsvTable {
  std::vector<std::vector<CsvField>> lines;  // of the same length
  bool isOfNumbers = true;
};

// Whether a field without quotes would be read as a number, or as a missing one.
bool isCsvNumber(std::string_view field);

// Skips blank lines, lines that begin with #, and a first line without numbers if all other lines
// consist of numbers. Throws BadText. The table must not outlive the text.
CsvTable tableFrom(std::string_view csv, char delimiter = ',');

// A table for each choice of columns. A first line that names a chosen column is skipped, too.
std::vector<CsvTable> tablesFrom(std::string_view csv, char delimiter,
                                 const std::vector<CsvColumns>& choices);

// A list for each line of a table of numbers; an empty field and NA are "NaN".
JsonValue numbersOf(const CsvTable& table);

// A cell of the numbers and strings.
hcyclient::Array cellOf(const CsvTable& table);

}  // namespace hcy::tools
