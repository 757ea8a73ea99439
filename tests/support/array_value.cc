// SPDX-License-Identifier: Apache-2.0

#include "array_value.h"

#include <utility>

namespace hcy::abi {
namespace {

std::string bytesOfLogicals(std::string_view elements) {
  static_assert(sizeof(bool) == 1);
  std::string bytes;
  for (const char element : elements) bytes += element == '1' ? '\1' : '\0';
  return bytes;
}

}  // namespace

Value doubles(Dimensions dimensions, const std::vector<double>& real,
              const std::vector<double>& imaginary) {
  return numeric(hcyDOUBLE_CLASS, std::move(dimensions), real, imaginary);
}

Value logicals(Dimensions dimensions, std::string_view elements) {
  return {.classId = hcyLOGICAL_CLASS,
          .dimensions = std::move(dimensions),
          .real = bytesOfLogicals(elements)};
}

Value chars(Dimensions dimensions, std::u16string_view units) {
  return numeric(hcyCHAR_CLASS, std::move(dimensions),
                 std::vector<char16_t>(units.begin(), units.end()));
}

Value cell(Dimensions dimensions, std::vector<Value> values) {
  return {
      .classId = hcyCELL_CLASS, .dimensions = std::move(dimensions), .values = std::move(values)};
}

Value structure(Dimensions dimensions, std::vector<std::string> fields, std::vector<Value> values) {
  return {.classId = hcySTRUCT_CLASS,
          .dimensions = std::move(dimensions),
          .values = std::move(values),
          .fields = std::move(fields)};
}

Value sparseDoubles(Dimensions dimensions, std::vector<std::size_t> rows,
                    std::vector<std::size_t> columnStarts, const std::vector<double>& real,
                    const std::vector<double>& imaginary) {
  Value value = doubles(std::move(dimensions), real, imaginary);
  value.isSparse = true;
  value.rows = std::move(rows);
  value.columnStarts = std::move(columnStarts);
  return value;
}

Value sparseLogicals(Dimensions dimensions, std::vector<std::size_t> rows,
                     std::vector<std::size_t> columnStarts, std::string_view elements) {
  Value value = logicals(std::move(dimensions), elements);
  value.isSparse = true;
  value.rows = std::move(rows);
  value.columnStarts = std::move(columnStarts);
  return value;
}

Value neverSet() { return {.isNeverSet = true}; }

}  // namespace hcy::abi
