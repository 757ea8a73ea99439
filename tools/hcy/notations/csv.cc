// SPDX-License-Identifier: Apache-2.0

#include "notations/csv.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "notations/exact_integers.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;
using Line = std::vector<CsvField>;

void findNumber(CsvField& field, std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const auto first = std::min(text.find_first_not_of(blanks), text.size());
  text = text.substr(first, text.find_last_not_of(blanks) + 1 - first);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  if (text == "NA") text = {};
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  field.number = text;
  // A number that a double cannot hold is still a number.
  field.isNumber = text.empty() || (read.ec != std::errc::invalid_argument && read.ptr == end);
}

void requireUtf8(const CsvField& field) {
  for (std::string_view rest = field.text; !rest.empty();) {
    if (!takeCodePoint(rest)) throw BadText(field.offset, "the field is not valid UTF-8");
  }
}

// Splits the text into lines of fields.
class Splitter {
 public:
  Splitter(std::string_view text, char delimiter)
      : text_(text), delimiter_(delimiter), fieldEnds_{delimiter, '\r', '\n'} {
    if (text_.starts_with("\xEF\xBB\xBF")) position_ = 3;
  }

  std::vector<Line> lines() {
    std::vector<Line> all;
    while (position_ < text_.size()) {
      if (skipsLine()) continue;
      all.push_back(line());
      if (all.back().size() != all.front().size()) {
        const std::size_t count = all.back().size();
        throw BadText(all.back().front().offset, "this line has " + std::to_string(count) +
                                                     (count == 1 ? " field" : " fields") +
                                                     ", but the first line has " +
                                                     std::to_string(all.front().size()));
      }
    }
    return all;
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

  Line line() {
    Line fields;
    do {
      fields.push_back(text_.substr(position_).starts_with('"') ? quotedField() : field());
      requireUtf8(fields.back());
    } while (takes(delimiter_));
    takes('\r');
    if (!takes('\n') && position_ < text_.size()) {
      throw BadText(position_, std::string("expected a ") +
                                   (delimiter_ == ',' ? "comma" : "delimiter") +
                                   " or the end of the line after the closing quote");
    }
    return fields;
  }

  bool takes(char c) {
    if (position_ == text_.size() || text_[position_] != c) return false;
    ++position_;
    return true;
  }

  CsvField field() {
    const std::size_t end = std::min(text_.find_first_of(fieldEnds_, position_), text_.size());
    const std::string_view text = text_.substr(position_, end - position_);
    CsvField made{position_, std::string(text)};
    findNumber(made, text);
    position_ = end;
    return made;
  }

  CsvField quotedField() {
    CsvField made{position_, {}};
    do {
      const std::size_t end = text_.find('"', position_ + 1);
      if (end == std::string_view::npos) throw BadText(made.offset, "the closing quote is missing");
      if (position_ != made.offset) made.text += '"';  // two quotes stand for one
      made.text += text_.substr(position_ + 1, end - position_ - 1);
      position_ = end + 1;
    } while (text_.substr(position_).starts_with('"'));
    return made;
  }

  std::string_view text_;
  char delimiter_;
  std::string fieldEnds_;
  std::size_t position_ = 0;
};

bool isOfNumbers(const Line& line) {
  return std::all_of(line.begin(), line.end(),
                     [](const CsvField& field) { return field.isNumber; });
}

// Whether the fields are names, some of which may be empty.
bool isHeader(const Line& line) {
  return !isOfNumbers(line) && std::all_of(line.begin(), line.end(), [](const CsvField& field) {
    return field.number.empty() || !field.isNumber;
  });
}

std::size_t indexOf(const CsvColumn& column, const Line& header) {
  if (column.index) {
    if (*column.index < header.size()) return *column.index;
    throw BadText(header.front().offset, "there is no column " + std::to_string(*column.index) +
                                             "; the columns are numbered from 0 to " +
                                             std::to_string(header.size() - 1));
  }
  const auto isNamed = [&](const CsvField& field) { return field.text == column.name; };
  const auto found = std::find_if(header.begin(), header.end(), isNamed);
  if (found == header.end()) {
    throw BadText(header.front().offset, "there is no column named " + printable(column.name));
  }
  if (std::find_if(std::next(found), header.end(), isNamed) != header.end()) {
    throw BadText(found->offset, "two columns are named " + printable(column.name) +
                                     "; choose one of them by its number");
  }
  return static_cast<std::size_t>(found - header.begin());
}

// The first line is a header if `hasHeader` is set, or if it looks like one.
CsvTable tableOf(std::vector<Line> lines, bool hasHeader) {
  CsvTable table{std::move(lines)};
  std::vector<Line>& all = table.lines;
  if (all.empty()) return table;
  table.isOfNumbers = std::all_of(std::next(all.begin()), all.end(), isOfNumbers);
  const bool looksLikeHeader = all.size() > 1 && table.isOfNumbers && isHeader(all.front());
  if (hasHeader || looksLikeHeader) all.erase(all.begin());
  table.isOfNumbers = table.isOfNumbers && (all.empty() || isOfNumbers(all.front()));
  return table;
}

CsvTable columnsOf(const std::vector<Line>& lines, const CsvColumns& columns) {
  std::vector<std::size_t> indices;
  indices.reserve(columns.size());
  for (const CsvColumn& column : columns) indices.push_back(indexOf(column, lines.front()));
  std::vector<Line> chosen;
  chosen.reserve(lines.size());
  for (const Line& line : lines) {
    Line& fields = chosen.emplace_back();
    for (const std::size_t index : indices) fields.push_back(line[index]);
  }
  const bool areNamed = std::any_of(columns.begin(), columns.end(),
                                    [](const CsvColumn& column) { return !column.index; });
  return tableOf(std::move(chosen), areNamed);
}

}  // namespace

bool isCsvNumber(std::string_view field) {
  CsvField read;
  findNumber(read, field);
  return read.isNumber;
}

CsvTable tableFrom(std::string_view csv, char delimiter) {
  return tableOf(Splitter(csv, delimiter).lines(), false);
}

std::vector<CsvTable> tablesFrom(std::string_view csv, char delimiter,
                                 const std::vector<CsvColumns>& choices) {
  const std::vector<Line> lines = Splitter(csv, delimiter).lines();
  if (lines.empty()) throw BadText(0, "the table is empty: there are no columns to choose from");
  std::vector<CsvTable> tables;
  tables.reserve(choices.size());
  for (const CsvColumns& columns : choices) tables.push_back(columnsOf(lines, columns));
  return tables;
}

JsonValue numbersOf(const CsvTable& table) {
  JsonList rows;
  for (const Line& line : table.lines) {
    JsonList row;
    for (const CsvField& field : line) {
      JsonValue& value = row.emplace_back();
      value.offset = field.offset;
      if (field.number.empty()) {
        value.content = std::string("NaN");
      } else {
        value.content = JsonNumber{field.number};
      }
    }
    rows.push_back({line.front().offset, std::move(row)});
  }
  return {0, std::move(rows)};
}

hcyclient::Array cellOf(const CsvTable& table) {
  const std::size_t rows = table.lines.size();
  const std::size_t columns = rows == 0 ? 0 : table.lines.front().size();
  Array cell = Array::cells({rows, columns});
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      const CsvField& field = table.lines[i][j];
      double number = 0;
      const char* const end = field.number.data() + field.number.size();
      const auto read = std::from_chars(field.number.data(), end, number);
      const bool isText = !field.isNumber || read.ec != std::errc();
      if (!isText) requireExactInteger(field.number, field.offset);
      cell[i + j * rows] = isText ? Array(field.text) : Array(number);
    }
  }
  return cell;
}

}  // namespace hcy::tools
