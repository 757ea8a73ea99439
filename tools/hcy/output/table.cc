// SPDX-License-Identifier: Apache-2.0

#include "output/table.h"

#include <algorithm>
#include <vector>

#include "text/text.h"

namespace hcy::tools {

std::string alignedColumns(std::size_t rows, std::size_t columns,
                           const std::function<std::string(std::size_t, std::size_t)>& textAt,
                           std::size_t indent, std::size_t width) {
  constexpr std::size_t gap = 2;
  const std::string margin(indent, ' ');
  std::vector<std::string> lines(rows, margin);
  std::size_t used = indent;
  std::size_t shown = 0;
  for (; shown < columns; ++shown) {
    std::vector<std::string> column;
    std::size_t widest = 0;
    for (std::size_t i = 0; i < rows; ++i) {
      column.push_back(textAt(i, shown));
      widest = std::max(widest, column.back().size());
    }
    used += widest + (shown > 0 ? gap : 0);
    if (width > 0 && used > width && shown > 0) break;
    for (std::size_t i = 0; i < rows; ++i) {
      lines[i] += std::string(shown > 0 ? gap : 0, ' ');
      lines[i] += std::string(widest - column[i].size(), ' ') + column[i];
    }
  }
  std::string out;
  for (const std::string& line : lines) out += cutToWidth(line, width) + "\n";
  if (shown < columns) {
    const std::string left = std::to_string(columns - shown);
    out +=
        cutToWidth(margin + "… " + left + " more column" + (left == "1" ? "" : "s"), width) + "\n";
  }
  return out;
}

}  // namespace hcy::tools
