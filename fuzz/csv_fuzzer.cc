// SPDX-License-Identifier: Apache-2.0
//
// Tables of any delimiter, the first byte, and what is written of them again; and columns of
// tables, which a line before the table chooses as an argument does.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "arguments/argument_words.h"
#include "notations/array_json.h"
#include "notations/csv.h"
#include "notations/csv_text.h"
#include "require.h"
#include "text/source_text.h"

namespace {

using namespace hcy::tools;

hcyclient::Array arrayOf(const CsvTable& table) {
  return table.isOfNumbers ? matrixOf(table, hcyDOUBLE_CLASS) : cellOf(table);
}

// The values must be the same after they were written and read.
void requireReadBack(const CsvTable& table, char delimiter) {
  const hcyclient::Array array = arrayOf(table);
  if (array.size() == 0) return;
  const std::string written = csvOf(array, delimiter);
  const CsvTable again = tableFrom(written, delimiter);
  // A line of names above numbers is read as a header: then all lines but the first are the same.
  if (!table.isOfNumbers && again.isOfNumbers) {
    HCY_REQUIRE(again.rows() + 1 == array.rows());
    return;
  }
  HCY_REQUIRE(again.rows() == array.rows() && toJson(arrayOf(again)) == toJson(array));
}

void chooseColumns(std::string_view line, std::string_view csv, char delimiter) {
  const ArgumentWords words = argumentWords(line);
  for (const CsvTable& table : tablesFrom(csv, delimiter, words.choices)) {
    HCY_REQUIRE(arrayOf(table).rows() == table.rows());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (text.empty()) return 0;
  constexpr std::string_view delimiters = ",;\t|";
  const char delimiter = delimiters[data[0] % delimiters.size()];
  const std::string_view rest = text.substr(1);
  try {
    requireReadBack(tableFrom(rest, delimiter), delimiter);
  } catch (const BadText& problem) {
    HCY_REQUIRE(problem.offset <= size);
  }
  const std::size_t end = rest.find('\n');
  if (end == std::string_view::npos) return 0;
  try {
    chooseColumns(rest.substr(0, end), rest.substr(end + 1), delimiter);
  } catch (const BadText& problem) {
    HCY_REQUIRE(problem.offset <= size);
  }
  return 0;
}
