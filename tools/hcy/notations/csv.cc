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
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  field.number = text;
  // One that a double cannot hold is a number all the same.
  field.isNumber = text.empty() || (read.ec != std::errc::invalid_argument && read.ptr == end);
}

void requireUtf8(const CsvField& field) {
  for (std::string_view rest = field.text; !rest.empty();) {
    if (!takeCodePoint(rest)) throw BadText(field.offset, "the field is not UTF-8");
  }
}

// Takes the text apart into lines of fields.
class Splitter {
 public:
  explicit Splitter(std::string_view text) : text_(text) {
    if (text_.starts_with("\xEF\xBB\xBF")) position_ = 3;
  }

  std::vector<Line> lines() {
    std::vector<Line> all;
    while (position_ < text_.size()) {
      if (skipsLine()) continue;
      all.push_back(line());
      if (all.back().size() != all.front().size()) {
        const std::size_t count = all.back().size();
        throw BadText(all.back().front().offset,
                      "a line of " + std::to_string(count) + (count == 1 ? " field" : " fields") +
                          " among lines of " + std::to_string(all.front().size()));
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
    } while (takes(','));
    takes('\r');
    if (!takes('\n') && position_ < text_.size()) {
      throw BadText(position_, "neither a comma nor the end of the line");
    }
    return fields;
  }

  bool takes(char c) {
    if (position_ == text_.size() || text_[position_] != c) return false;
    ++position_;
    return true;
  }

  CsvField field() {
    const std::size_t end = std::min(text_.find_first_of(",\r\n", position_), text_.size());
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
      if (end == std::string_view::npos) throw BadText(made.offset, "the quote is not closed");
      if (position_ != made.offset) made.text += '"';  // two quotes stand for one
      made.text += text_.substr(position_ + 1, end - position_ - 1);
      position_ = end + 1;
    } while (text_.substr(position_).starts_with('"'));
    return made;
  }

  std::string_view text_;
  std::size_t position_ = 0;
};

bool isOfNumbers(const Line& line) {
  return std::all_of(line.begin(), line.end(),
                     [](const CsvField& field) { return field.isNumber; });
}

// Names, of which some may be empty.
bool isHeader(const Line& line) {
  return !isOfNumbers(line) && std::all_of(line.begin(), line.end(), [](const CsvField& field) {
    return field.number.empty() || !field.isNumber;
  });
}

}  // namespace

CsvTable tableFrom(std::string_view csv) {
  CsvTable table{Splitter(csv).lines()};
  std::vector<Line>& lines = table.lines;
  if (lines.empty()) return table;
  table.isOfNumbers = std::all_of(std::next(lines.begin()), lines.end(), isOfNumbers);
  if (lines.size() > 1 && table.isOfNumbers && isHeader(lines.front())) lines.erase(lines.begin());
  table.isOfNumbers = table.isOfNumbers && isOfNumbers(lines.front());
  return table;
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
  const std::size_t columns = table.lines.front().size();
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
