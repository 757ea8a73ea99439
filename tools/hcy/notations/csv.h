// SPDX-License-Identifier: Apache-2.0
//
// Comma-separated values (RFC 4180), and those separated by another character.

#pragma once

#include <cstddef>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "notations/json_value.h"

namespace hcy::tools {

// Where a field is in the source, with its quotes. No file is longer than 2^31 bytes.
struct CsvPlace {
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

// A column, by its name in the first line or by its number, counted from 0.
struct CsvColumn {
  std::string name;
  std::optional<std::size_t> index = {};
};
using CsvColumns = std::vector<CsvColumn>;

// Must not outlive the source.
struct CsvTable {
  std::string_view source;
  std::vector<CsvPlace> fields;  // line by line
  std::size_t columns = 0;
  bool isOfNumbers = true;

  std::size_t rows() const { return columns == 0 ? 0 : fields.size() / columns; }
  std::size_t offset(std::size_t row, std::size_t column) const {
    return fields[row * columns + column].offset;
  }
  // The field without its quotes.
  std::string text(std::size_t row, std::size_t column) const;
  // The digits of the field, without blanks around them; empty if the field is empty or NA. Nothing
  // if it is not a number, or is in quotes.
  std::optional<std::string_view> number(std::size_t row, std::size_t column) const;
};

// Whether a field without quotes would be read as a number, or as a missing one.
bool isCsvNumber(std::string_view field);

// Skips blank lines, lines that begin with #, and a first line without numbers if all other lines
// consist of numbers. Throws BadText.
CsvTable tableFrom(std::string_view csv, char delimiter = ',');

// A table for each choice of columns. The first line is skipped in all of them if a column is
// chosen by its name, or if a column of the source, chosen or not, has a text above numbers.
std::vector<CsvTable> tablesFrom(std::string_view csv, char delimiter,
                                 const std::vector<CsvColumns>& choices);

// The matrix of a table of numbers, in a class of numbers or logical; an empty field and NA are
// NaN. Without a class, it is double, and integers must be exact. Throws BadText.
hcyclient::Array matrixOf(const CsvTable& table, std::optional<hcyClassID> classId = {});

// A list for each line of a table of numbers; an empty field and NA are "NaN".
JsonValue numbersOf(const CsvTable& table);

// A cell of the numbers and strings.
hcyclient::Array cellOf(const CsvTable& table);

}  // namespace hcy::tools
