// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"

namespace hcy::server {
namespace {

constexpr char16_t kDivisionSign = 0xF7;
constexpr char16_t kSmallYDiaeresis = 0xFF;
constexpr char16_t kCapitalYDiaeresis = 0x178;

// ASCII and Latin-1. Sharp s and the micro sign stay: their capitals are no single Latin letters.
char16_t upperCase(char16_t unit) {
  const bool smallAscii = unit >= 'a' && unit <= 'z';
  const bool smallLatin1 = unit >= 0xE0 && unit < kSmallYDiaeresis && unit != kDivisionSign;
  if (smallAscii || smallLatin1) return static_cast<char16_t>(unit - 0x20);
  return unit == kSmallYDiaeresis ? kCapitalYDiaeresis : unit;
}

// Knuth, Morris and Pratt's search: its time grows with the sum of both lengths, not their product.
class Search {
 public:
  explicit Search(std::u16string_view pattern) : pattern_(pattern), borders_(pattern.size()) {
    for (std::size_t i = 1, matched = 0; i < pattern.size(); ++i) {
      matched = extend(matched, pattern[i]);
      borders_[i] = matched;
    }
  }

  // Where the pattern, which is not empty, first occurs from `begin` on; the end if it does not.
  std::size_t find(std::u16string_view text, std::size_t begin) const {
    std::size_t matched = 0;
    for (std::size_t i = begin; i < text.size(); ++i) {
      matched = extend(matched, text[i]);
      if (matched == pattern_.size()) return i + 1 - matched;
    }
    return text.size();
  }

 private:
  // How many units of the pattern the text ends with after one more, if it ended with `matched`.
  std::size_t extend(std::size_t matched, char16_t unit) const {
    while (matched > 0 && pattern_[matched] != unit) matched = borders_[matched - 1];
    return pattern_[matched] == unit ? matched + 1 : matched;
  }

  std::u16string_view pattern_;
  // For each beginning of the pattern, the length of the longest shorter one that it ends with.
  std::vector<std::size_t> borders_;
};

Array rowOf(std::u16string_view units) {
  Array row = Array::zeros<char16_t>(1, units.size());
  std::ranges::copy(units, row.span<char16_t>().begin());
  return row;
}

}  // namespace

void textUpper(Call& call) {
  const std::u16string_view units = codeUnits(call.inputs[0], "text");
  call.count(kArrayMemory + sizeof(char16_t) * units.size());
  Array& upper = call.add(Array::zeros<char16_t>(shapeOf(call.inputs[0], "text")));
  std::ranges::transform(units, upper.span<char16_t>().begin(), upperCase);
}

void textSplit(Call& call) {
  const std::u16string_view text = rowOfCodeUnits(call.inputs[0], "text");
  const std::u16string_view delimiter =
      call.inputs.size() > 1 ? rowOfCodeUnits(call.inputs[1], "delimiter") : u" ";
  if (delimiter.empty()) throw FunctionError(kArgumentSize, "delimiter is empty.");
  std::vector<std::u16string_view> pieces;
  const Search search(delimiter);
  for (std::size_t begin = 0;;) {
    const std::size_t end = search.find(text, begin);
    call.count(kArrayMemory);
    pieces.push_back(text.substr(begin, end - begin));
    if (end == text.size()) break;
    begin = end + delimiter.size();
  }
  call.count(sizeof(char16_t) * text.size());
  const Array& cell = call.add(Array::cells(1, pieces.size()));
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    hcySetCell(cell.get(), i, rowOf(pieces[i]).get());
  }
}

}  // namespace hcy::server
