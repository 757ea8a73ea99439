// SPDX-License-Identifier: Apache-2.0
//
// Comma-separated values (RFC 4180).

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "notations/json_value.h"

namespace hcy::tools {

struct CsvField {
  std::size_t offset = 0;
  std::string text;
  // Its digits in the text that was read, without the blanks around them; none when the field is
  // empty. Never of a field in quotes.
  std::string_view number = {};
  bool isNumber = false;
};

struct CsvTable {
  std::vector<std::vector<CsvField>> lines;  // of one length
  bool isOfNumbers = true;
};

// Leaves out lines of nothing but blanks, lines that begin with #, and a first line without a
// number above lines of nothing but numbers. Throws BadText. The table must not outlive the text.
CsvTable tableFrom(std::string_view csv);

// A list for each line of a table of numbers; an empty field is "NaN".
JsonValue numbersOf(const CsvTable& table);

// Numbers and texts.
hcyclient::Array cellOf(const CsvTable& table);

}  // namespace hcy::tools
