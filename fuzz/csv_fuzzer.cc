// SPDX-License-Identifier: Apache-2.0
//
// Tables of any delimiter, the first byte, and what is written of them again.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "notations/csv.h"
#include "notations/csv_text.h"
#include "notations/exact_integers.h"
#include "notations/json_array.h"
#include "require.h"
#include "text/source_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (text.empty()) return 0;
  constexpr std::string_view delimiters = ",;\t|";
  const char delimiter = delimiters[data[0] % delimiters.size()];
  try {
    const std::string_view csv = text.substr(1);
    const hcy::tools::CsvTable table = hcy::tools::tableFrom(csv, delimiter);
    if (!table.isOfNumbers) {
      const auto cell = hcy::tools::cellOf(table);
      const std::string written = hcy::tools::csvOf(cell, delimiter);
      HCY_REQUIRE(hcy::tools::tableFrom(written, delimiter).lines.size() + 1 >= cell.rows());
      return 0;
    }
    const auto matrix = hcy::tools::arrayFrom(
        {0, hcy::tools::JsonObject{{0, "$double", hcy::tools::numbersOf(table)}}});
    if (matrix.size() == 0) return 0;
    const std::string written = hcy::tools::csvOf(matrix, delimiter);
    const hcy::tools::CsvTable again = hcy::tools::tableFrom(written, delimiter);
    HCY_REQUIRE(again.isOfNumbers && again.lines.size() == matrix.rows());
  } catch (const hcy::tools::BadText& problem) {
    HCY_REQUIRE(problem.offset <= size);
  }
  return 0;
}
