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
  // Its digits in the text that was read, without the blanks around them; none if the field is
  // empty or NA. Never of a field in quotes.
  std::string_view number = {};
  bool isNumber = false;
};

// A column by its name in the first line, or by its number, counted from 0.
struct CsvColumn {
  std::string name;
  std::optional<std::size_t> index = {};
};
using CsvColumns = std::vector<CsvColumn>;

struct CsvTable {
  std::vector<std::vector<CsvField>> lines;  // of one length
  bool isOfNumbers = true;
};

// Whether a field that is not in quotes would be taken for a number, which may be missing.
bool isCsvNumber(std::string_view field);

// Leaves out lines of nothing but blanks, lines that begin with #, and a first line without a
// number above lines of nothing but numbers. Throws BadText. The table must not outlive the text.
CsvTable tableFrom(std::string_view csv, char delimiter = ',');

// A table for each choice of columns. The first line is left out also if it names a chosen column.
std::vector<CsvTable> tablesFrom(std::string_view csv, char delimiter,
                                 const std::vector<CsvColumns>& choices);

// A list for each line of a table of numbers; an empty field and NA are "NaN".
JsonValue numbersOf(const CsvTable& table);

// Numbers and texts.
hcyclient::Array cellOf(const CsvTable& table);

}  // namespace hcy::tools
