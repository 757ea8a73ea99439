// SPDX-License-Identifier: Apache-2.0

#include "notations/csv_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "notations/csv.h"
#include "notations/element_json.h"
#include "notations/element_types.h"
#include "notations/no_notation.h"
#include "notations/places.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using FieldAt = std::function<void(std::string& out, std::size_t row, std::size_t column)>;

// A grid of fields.
struct Grid {
  std::size_t rows = 0, columns = 0;
  FieldAt appendField;
};

std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) out.append(c == '"' ? 2 : 1, c);
  return out += '"';
}

// In quotes if it would otherwise be read as a number, the end of a field or line, or a comment.
void appendText(std::string& out, std::string_view text, char delimiter) {
  constexpr std::string_view blanks = " \t";
  const bool isPlain = text.find_first_of("\"\r\n") == std::string_view::npos &&
                       text.find(delimiter) == std::string_view::npos && !text.starts_with('#') &&
                       !text.starts_with("\xEF\xBB\xBF") && !isCsvNumber(text) &&
                       blanks.find(text.front()) == std::string_view::npos &&
                       blanks.find(text.back()) == std::string_view::npos;
  out += isPlain ? std::string(text) : quoted(text);
}

template <class T>
void appendNumber(std::string& out, T value) {
  if constexpr (std::is_same_v<T, bool>) {
    out += value ? '1' : '0';
  } else {
    if constexpr (std::is_floating_point_v<T>) {
      if (std::isnan(value)) return void(out += "NaN");
      if (std::isinf(value)) return void(out += value < 0 ? "-Inf" : "Inf");
    }
    appendElement(out, value);
  }
}

std::string utf8Of(const Array& text) {
  try {
    return text.toString();
  } catch (const hcyclient::UsageError& error) {
    throw NoNotation(error.what());
  }
}

// The rows of a char matrix, a field each.
Grid textRows(const Array& array, const Shape& shape, char delimiter) {
  const std::size_t rows = array.size() == 0 ? 1 : shape[0];
  return {rows, 1, [&array, rows, delimiter](std::string& out, std::size_t i, std::size_t) {
            const auto units = array.span<char16_t>();
            std::u16string row;
            for (std::size_t k = i; k < units.size(); k += rows) row += units[k];
            appendText(out, utf8Of(Array(row)), delimiter);
          }};
}

bool isText(const Array& array) {
  return array.isText() && (array.size() == 0 || array.rows() == 1) && array.shape().size() <= 2;
}

// Appends an element of a cell or a field of a struct. `name` says which it is.
template <class Name>
void appendSingle(std::string& out, const Array& array, char delimiter, Name name) {
  if (isText(array)) return appendText(out, utf8Of(array), delimiter);
  const bool isNumber = !array.isCell() && !array.isStruct() && !array.isText() &&
                        !array.isSparse() && !array.isComplex();
  if (isNumber && array.size() == 0) return;
  if (!isNumber || array.size() != 1) {
    throw NoNotation(name() + " is not a real number or a string");
  }
  withElementType(array.classId(), [&](auto type) {
    using T = typename decltype(type)::type;
    if constexpr (!std::is_same_v<T, char16_t>) appendNumber<T>(out, array.span<T>()[0]);
  });
}

Grid cellElements(const Array& array, const Shape& shape, char delimiter) {
  return {shape[0], shape[1],
          [&array, shape, delimiter](std::string& out, std::size_t i, std::size_t j) {
            const std::size_t index = i + j * shape[0];
            appendSingle(out, array[index], delimiter,
                         [&] { return "element " + placeText(index, shape); });
          }};
}

Grid numbers(const Array& array, const Shape& shape) {
  return withElementType(array.classId(), [&](auto type) -> Grid {
    using T = typename decltype(type)::type;
    return {
        shape[0], shape[1],
        [span = array.span<T>(), rows = shape[0]](std::string& out, std::size_t i, std::size_t j) {
          if constexpr (!std::is_same_v<T, char16_t>) appendNumber<T>(out, span[i + j * rows]);
        }};
  });
}

Grid gridOf(const Array& array, char delimiter) {
  Shape shape = array.shape();
  shape.resize(std::max<std::size_t>(shape.size(), 2), 1);
  if (array.isSparse()) throw NoNotation("a sparse array cannot be written as a table");
  if (array.isComplex()) throw NoNotation("complex numbers cannot be written as a table");
  if (shape.size() > 2) {
    throw NoNotation("an array with more than two dimensions cannot be written as a table");
  }
  if (array.isText()) return textRows(array, shape, delimiter);
  return array.isCell() ? cellElements(array, shape, delimiter) : numbers(array, shape);
}

void appendLines(std::string& out, const Grid& grid, char delimiter) {
  for (std::size_t i = 0; i < grid.rows; ++i) {
    const std::size_t start = out.size();
    for (std::size_t j = 0; j < grid.columns; ++j) {
      if (j > 0) out += delimiter;
      grid.appendField(out, i, j);
    }
    // A reader would skip a blank line.
    if (out.find_first_not_of(" \t", start) == std::string::npos && grid.columns > 0) {
      out.insert(start, "NaN");
    }
    out += '\n';
  }
}

std::string fieldName(const std::string& name) { return "field " + printable(name); }

[[noreturn]] void refuseColumn(const std::string& name) {
  throw NoNotation(fieldName(name) + " is not a column: it must be a vector or a string");
}

std::size_t lengthOf(const Array& column) { return column.isText() ? 1 : column.size(); }

// The fields of a single struct are the columns, all of the same length.
std::vector<Array> columnsOf(const Array& array, const std::vector<std::string>& names) {
  std::vector<Array> columns;
  for (const std::string& name : names) {
    Array column = array(0, name);
    const bool isVector =
        column.shape().size() <= 2 && (column.rows() == 1 || column.columns() == 1);
    const bool isSingle = column.isText();
    if (column.isStruct() || (!isSingle && !isVector)) refuseColumn(name);
    columns.push_back(std::move(column));
  }
  const std::size_t length = lengthOf(columns.front());
  for (std::size_t j = 1; j < columns.size(); ++j) {
    const std::size_t other = lengthOf(columns[j]);
    if (other == length) continue;
    throw NoNotation(fieldName(names[j]) + " has " + std::to_string(other) +
                     (other == 1 ? " element" : " elements") + ", but " + fieldName(names.front()) +
                     " has " + std::to_string(length));
  }
  return columns;
}

// Appends element `i` of a column.
void appendElementOf(std::string& out, const Array& column, const std::string& name, std::size_t i,
                     char delimiter) {
  if (column.isText()) {
    return appendSingle(out, column, delimiter, [&] { return fieldName(name); });
  }
  const Grid grid = gridOf(column, delimiter);
  column.rows() == 1 ? grid.appendField(out, 0, i) : grid.appendField(out, i, 0);
}

std::string structTable(const Array& array, char delimiter) {
  const std::vector<std::string> names = array.fieldNames();
  std::string out;
  for (const std::string& name : names) {
    if (&name != &names.front()) out += delimiter;
    appendText(out, name, delimiter);
  }
  if (names.empty()) throw NoNotation("a struct without fields cannot be written as a table");
  out += '\n';
  if (array.size() != 1) {
    appendLines(out,
                {array.size(), names.size(),
                 [&](std::string& line, std::size_t i, std::size_t j) {
                   appendSingle(line, array(i, names[j]), delimiter, [&] {
                     return fieldName(names[j]) + " of element " + placeText(i, shapeOf(array));
                   });
                 }},
                delimiter);
    return out;
  }
  const std::vector<Array> columns = columnsOf(array, names);
  const std::size_t rows = lengthOf(columns.front());
  appendLines(out,
              {rows, columns.size(),
               [&](std::string& line, std::size_t i, std::size_t j) {
                 appendElementOf(line, columns[j], names[j], i, delimiter);
               }},
              delimiter);
  return out;
}

}  // namespace

std::string csvOf(const hcyclient::Array& array, char delimiter) {
  if (array.isStruct()) return structTable(array, delimiter);
  std::string out;
  appendLines(out, gridOf(array, delimiter), delimiter);
  return out;
}

}  // namespace hcy::tools
