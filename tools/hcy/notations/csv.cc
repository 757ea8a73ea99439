// SPDX-License-Identifier: Apache-2.0

#include "notations/csv.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "notations/element_types.h"
#include "notations/exact_integers.h"
#include "notations/json_elements.h"
#include "text/quoted_text.h"
#include "text/source_text.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;

struct Number {
  std::string_view digits;
  bool isNumber = false;
};

Number numberIn(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const auto first = std::min(text.find_first_not_of(blanks), text.size());
  text = text.substr(first, text.find_last_not_of(blanks) + 1 - first);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  if (text == "NA") text = {};
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  // A number that a double cannot hold is still a number.
  return {text, text.empty() || (read.ec != std::errc::invalid_argument && read.ptr == end)};
}

// Splits the source into fields.
class Splitter {
 public:
  Splitter(std::string_view text, char delimiter)
      : text_(text), delimiter_(delimiter), fieldEnds_{delimiter, '\r', '\n'} {
    if (text_.starts_with("\xEF\xBB\xBF")) position_ = 3;
  }

  CsvTable table() {
    CsvTable table{text_, {}};
    const auto isEnd = [this](char c) { return c == delimiter_ || c == '\n'; };
    fields_.reserve(1 + static_cast<std::size_t>(std::count_if(text_.begin(), text_.end(), isEnd)));
    while (position_ < text_.size()) {
      if (skipsLine()) continue;
      const std::size_t start = fields_.size();
      readLine();
      const std::size_t count = fields_.size() - start;
      if (start == 0) table.columns = count;
      if (count != table.columns) {
        throw BadText(fields_[start].offset, "this line has " + std::to_string(count) +
                                                 (count == 1 ? " field" : " fields") +
                                                 ", but the first line has " +
                                                 std::to_string(table.columns));
      }
    }
    table.fields = std::move(fields_);
    return table;
  }

 private:
  bool skipsLine() {
    const std::size_t end = std::min(text_.find('\n', position_), text_.size());
    const std::string_view line = text_.substr(position_, end - position_);
    if (!line.starts_with('#') && line.find_first_not_of(" \t\r") != std::string_view::npos)
      return false;
    position_ = std::min(end + 1, text_.size());
    return true;
  }

  void readLine() {
    do {
      readField();
    } while (takes(delimiter_));
    const bool hasReturn = takes('\r');
    if (takes('\n') || position_ == text_.size()) return;
    if (hasReturn) {
      throw BadText(position_ - 1,
                    "this carriage return is not followed by a line feed; put a field that "
                    "contains one in double quotes");
    }
    throw BadText(position_, std::string("expected a ") +
                                 (delimiter_ == ',' ? "comma" : "delimiter") +
                                 " or the end of the line after the closing quote");
  }

  bool takes(char c) {
    if (position_ == text_.size() || text_[position_] != c) return false;
    ++position_;
    return true;
  }

  void readField() {
    const std::size_t start = position_;
    if (text_.substr(start).starts_with('"')) {
      position_ = endOfQuoted(text_, start);
      if (position_ == std::string_view::npos) throw BadText(start, "the closing quote is missing");
    } else {
      position_ = std::min(text_.find_first_of(fieldEnds_, start), text_.size());
    }
    for (std::string_view rest = text_.substr(start, position_ - start); !rest.empty();) {
      if (!takeCodePoint(rest)) throw BadText(start, "the field is not valid UTF-8");
    }
    fields_.push_back(
        {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(position_ - start)});
  }

  std::string_view text_;
  char delimiter_;
  std::string fieldEnds_;
  std::size_t position_ = 0;
  std::vector<CsvPlace> fields_;
};

bool isNumber(const CsvTable& table, std::size_t row, std::size_t column) {
  return table.number(row, column).has_value();
}

bool isLineOfNumbers(const CsvTable& table, std::size_t row) {
  for (std::size_t j = 0; j < table.columns; ++j) {
    if (!isNumber(table, row, j)) return false;
  }
  return true;
}

// Whether all lines from `first` on consist of numbers.
bool areNumbers(const CsvTable& table, std::size_t first) {
  for (std::size_t i = first; i < table.rows(); ++i) {
    if (!isLineOfNumbers(table, i)) return false;
  }
  return true;
}

// Whether the first line consists of names, some of which may be empty.
bool beginsWithNames(const CsvTable& table) {
  for (std::size_t j = 0; j < table.columns; ++j) {
    const auto number = table.number(0, j);
    if (number && !number->empty()) return false;
  }
  return table.columns > 0 && !isLineOfNumbers(table, 0);
}

// Whether the column has a text above numbers, one of which is not missing.
bool isNamed(const CsvTable& table, std::size_t column) {
  if (isNumber(table, 0, column)) return false;
  bool hasDigits = false;
  for (std::size_t i = 1; i < table.rows(); ++i) {
    const auto number = table.number(i, column);
    if (!number) return false;
    hasDigits = hasDigits || !number->empty();
  }
  return hasDigits;
}

bool hasHeader(const CsvTable& table, const std::vector<CsvColumns>& choices) {
  for (const CsvColumns& columns : choices) {
    for (const CsvColumn& column : columns) {
      if (!column.index) return true;
    }
  }
  for (std::size_t j = 0; j < table.columns; ++j) {
    if (isNamed(table, j)) return true;
  }
  return false;
}

std::string suggestedName(const std::string& wanted, const std::vector<std::string>& header) {
  // A name of a letter or two is similar to any other.
  if (wanted.size() < 3) return {};
  std::vector<std::string> shown;
  std::transform(header.begin(), header.end(), std::back_inserter(shown),
                 [](const std::string& name) { return printable(name); });
  return suggestionFor(wanted, {shown.begin(), shown.end()});
}

std::size_t indexOf(const CsvColumn& column, const std::vector<std::string>& header,
                    const CsvTable& table) {
  if (column.index) {
    if (*column.index < header.size()) return *column.index;
    throw BadText(table.offset(0, 0), "there is no column " + std::to_string(*column.index) +
                                          "; the columns are numbered from 0 to " +
                                          std::to_string(header.size() - 1));
  }
  const auto found = std::find(header.begin(), header.end(), column.name);
  if (found == header.end()) {
    throw BadText(table.offset(0, 0), "there is no column named " + printable(column.name) +
                                          suggestedName(column.name, header));
  }
  const auto index = static_cast<std::size_t>(found - header.begin());
  if (std::find(std::next(found), header.end(), column.name) != header.end()) {
    throw BadText(table.offset(0, index), "two columns are named " + printable(column.name) +
                                              "; choose one of them by its number");
  }
  return index;
}

CsvTable columnsOf(const CsvTable& table, const std::vector<std::string>& header,
                   const CsvColumns& columns, std::size_t firstRow) {
  std::vector<std::size_t> indices;
  indices.reserve(columns.size());
  for (const CsvColumn& column : columns) indices.push_back(indexOf(column, header, table));
  CsvTable chosen{table.source, {}, indices.size()};
  chosen.fields.reserve((table.rows() - firstRow) * indices.size());
  for (std::size_t i = firstRow; i < table.rows(); ++i) {
    for (const std::size_t j : indices)
      chosen.fields.push_back(table.fields[i * table.columns + j]);
  }
  chosen.isOfNumbers = areNumbers(chosen, 0);
  return chosen;
}

JsonValue valueAt(const CsvTable& table, std::size_t row, std::size_t column) {
  const std::string_view digits = table.number(row, column).value_or(std::string_view());
  if (digits.empty()) return {table.offset(row, column), std::string("NaN")};
  return {table.offset(row, column), JsonNumber{digits}};
}

}  // namespace

std::string CsvTable::text(std::size_t row, std::size_t column) const {
  const CsvPlace& place = fields[row * columns + column];
  const std::string_view written = source.substr(place.offset, place.length);
  return written.starts_with('"') ? unquoted(written) : std::string(written);
}

std::optional<std::string_view> CsvTable::number(std::size_t row, std::size_t column) const {
  const CsvPlace& place = fields[row * columns + column];
  const Number number = numberIn(source.substr(place.offset, place.length));
  return number.isNumber ? std::optional(number.digits) : std::nullopt;
}

bool isCsvNumber(std::string_view field) { return numberIn(field).isNumber; }

CsvTable tableFrom(std::string_view csv, char delimiter) {
  CsvTable table = Splitter(csv, delimiter).table();
  table.isOfNumbers = areNumbers(table, 1);
  if (!table.isOfNumbers) return table;
  if (table.rows() > 1 && beginsWithNames(table)) {
    table.fields.erase(table.fields.begin(),
                       table.fields.begin() + static_cast<std::ptrdiff_t>(table.columns));
  }
  table.isOfNumbers = table.rows() == 0 || isLineOfNumbers(table, 0);
  return table;
}

std::vector<CsvTable> tablesFrom(std::string_view csv, char delimiter,
                                 const std::vector<CsvColumns>& choices) {
  const CsvTable table = Splitter(csv, delimiter).table();
  if (table.rows() == 0) {
    throw BadText(0, "the table is empty: there are no columns to choose from");
  }
  std::vector<std::string> header;
  for (std::size_t j = 0; j < table.columns; ++j) header.push_back(table.text(0, j));
  const std::size_t firstRow = hasHeader(table, choices) ? 1 : 0;
  std::vector<CsvTable> tables;
  tables.reserve(choices.size());
  for (const CsvColumns& columns : choices) {
    tables.push_back(columnsOf(table, header, columns, firstRow));
  }
  return tables;
}

Array matrixOf(const CsvTable& table, std::optional<hcyClassID> classId) {
  return withElementType(classId.value_or(hcyDOUBLE_CLASS), [&](auto type) {
    using T = typename decltype(type)::type;
    const std::size_t rows = table.rows();
    // A table without lines is 0-by-0.
    Array array = Array::zeros<T>(rows, rows == 0 ? 0 : table.columns);
    const auto elements = array.span<T>();
    for (std::size_t i = 0; i < rows; ++i) {
      for (std::size_t j = 0; j < table.columns; ++j) {
        const JsonValue value = valueAt(table, i, j);
        const auto* const number = value.as<JsonNumber>();
        if (!classId && number != nullptr) requireExactField(number->token, value.offset, true);
        elements[i + j * rows] = elementFrom<T>(value);
      }
    }
    return array;
  });
}

JsonValue numbersOf(const CsvTable& table) {
  JsonList rows;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    JsonList row;
    for (std::size_t j = 0; j < table.columns; ++j) row.push_back(valueAt(table, i, j));
    rows.push_back({table.offset(i, 0), std::move(row)});
  }
  return {0, std::move(rows)};
}

Array cellOf(const CsvTable& table) {
  const std::size_t rows = table.rows();
  Array cell = Array::cells({rows, table.columns});
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < table.columns; ++j) {
      const auto digits = table.number(i, j);
      double number = 0;
      const bool isText =
          !digits || digits->empty() ||
          std::from_chars(digits->data(), digits->data() + digits->size(), number).ec !=
              std::errc();
      if (!isText) requireExactField(*digits, table.offset(i, j), false);
      cell[i + j * rows] = isText ? Array(table.text(i, j)) : Array(number);
    }
  }
  return cell;
}

}  // namespace hcy::tools
