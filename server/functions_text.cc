// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "functions.h"

namespace hcy::server {
namespace {

using client::VORTEN_Array;

constexpr std::uint32_t kDivisionSign = 0xF7;
constexpr std::uint32_t kSmallYDiaeresis = 0xFF;
constexpr std::uint32_t kCapitalYDiaeresis = 0x178;

// ASCII and Latin-1. Sharp s and the micro sign stay: their capitals are no single Latin letters.
std::uint32_t upperCase(std::uint32_t unit) {
  const bool smallAscii = unit >= 'a' && unit <= 'z';
  const bool smallLatin1 = unit >= 0xE0 && unit < kSmallYDiaeresis && unit != kDivisionSign;
  if (smallAscii || smallLatin1) return unit - 0x20;
  return unit == kSmallYDiaeresis ? kCapitalYDiaeresis : unit;
}

using Position = CodeUnits::const_iterator;

// Knuth, Morris and Pratt's search: its time grows with the sum of both lengths, not their product.
class Search {
 public:
  explicit Search(const CodeUnits& pattern)
      : pattern_(pattern), borders_(static_cast<std::size_t>(pattern.size())) {
    for (int i = 1, matched = 0; i < pattern.size(); ++i) {
      matched = extend(matched, pattern[i]);
      borders_[static_cast<std::size_t>(i)] = matched;
    }
  }

  // Where the pattern, which is not empty, first occurs; `end` if it does not.
  Position find(Position begin, Position end) const {
    int matched = 0;
    for (Position next = begin; next != end; ++next) {
      matched = extend(matched, *next);
      if (matched == pattern_.size()) return next - (matched - 1);
    }
    return end;
  }

 private:
  // How many units of the pattern the text ends with after one more, if it ended with `matched`.
  int extend(int matched, std::uint32_t unit) const {
    while (matched > 0 && pattern_[matched] != unit) {
      matched = borders_[static_cast<std::size_t>(matched - 1)];
    }
    return pattern_[matched] == unit ? matched + 1 : matched;
  }

  const CodeUnits& pattern_;
  // For each beginning of the pattern, the length of the longest shorter one that it ends with.
  std::vector<int> borders_;
};

void addPiece(VORTEN_Array::Cell& pieces, Position begin, Position end) {
  Array& piece = *pieces.add_elements();
  piece.set_type(VORTEN_Array::CHAR);
  setDimensions(piece, {1, static_cast<std::size_t>(end - begin)});
  piece.mutable_qxchar()->mutable_elements()->Add(begin, end);
}

}  // namespace

void textUpper(Call& call) {
  CodeUnits& units = codeUnits(call.inputs[0], "text");
  std::ranges::transform(units, units.begin(), upperCase);
  call.outputs.Add()->Swap(&call.inputs[0]);
}

void textSplit(Call& call) {
  const CodeUnits& text = rowOfCodeUnits(call.inputs[0], "text");
  CodeUnits blank;
  blank.Add(' ');
  const CodeUnits& delimiter =
      call.inputs.size() > 1 ? rowOfCodeUnits(call.inputs[1], "delimiter") : blank;
  if (delimiter.empty()) throw FunctionError(kArgumentSize, "delimiter is empty.");
  Array& output = *call.outputs.Add();
  output.set_type(VORTEN_Array::CELL);
  VORTEN_Array::Cell& pieces = *output.mutable_cell();
  const Search search(delimiter);
  for (Position begin = text.begin();;) {
    const Position end = search.find(begin, text.end());
    addPiece(pieces, begin, end);
    if (end == text.end()) break;
    begin = end + delimiter.size();
  }
  setDimensions(output, {1, static_cast<std::size_t>(pieces.elements_size())});
}

}  // namespace hcy::server
