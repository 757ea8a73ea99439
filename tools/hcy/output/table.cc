// SPDX-License-Identifier: Apache-2.0

#include "output/table.h"

#include <algorithm>
#include <vector>

#include "text/text.h"

namespace hcy::tools {

Fold::Fold(std::size_t count, std::size_t most) : gap(count), left(0) {
  if (most == 0 || count <= most) return;
  gap = (most + 1) / 2;
  left = count - most;
}

std::string foldText(std::size_t count, std::string_view what) {
  return "… " + std::to_string(count) + " more " + std::string(what) + (count == 1 ? "" : "s");
}

std::string alignedColumns(std::size_t rows, std::size_t columns,
                           const std::function<std::string(std::size_t, std::size_t)>& textAt,
                           std::size_t indent, const DisplaySize& size) {
  constexpr std::size_t gap = 2;
  const std::string margin(indent, ' ');
  const Fold fold(rows, size.rows);
  const std::size_t shownRows = rows - fold.left;
  std::vector<std::string> lines(shownRows, margin);
  std::size_t used = indent;
  std::size_t shown = 0;
  for (; shown < columns; ++shown) {
    std::vector<std::string> column;
    std::size_t widest = 0;
    for (std::size_t i = 0; i < shownRows; ++i) {
      column.push_back(textAt(i < fold.gap ? i : i + fold.left, shown));
      widest = std::max(widest, column.back().size());
    }
    used += widest + (shown > 0 ? gap : 0);
    if (size.width > 0 && used > size.width && shown > 0) break;
    for (std::size_t i = 0; i < shownRows; ++i) {
      lines[i] += std::string(shown > 0 ? gap : 0, ' ');
      lines[i] += std::string(widest - column[i].size(), ' ') + column[i];
    }
  }
  if (fold.left > 0) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(fold.gap),
                 margin + foldText(fold.left, "row"));
  }
  if (shown < columns) lines.push_back(margin + foldText(columns - shown, "column"));
  std::string out;
  for (const std::string& line : lines) out += cutToWidth(line, size.width) + "\n";
  return out;
}

}  // namespace hcy::tools
