// SPDX-License-Identifier: Apache-2.0
//
// Rows of columns that are aligned to the right.

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace hcy::tools {

// How much is shown: lines are cut to `width` columns, and of many rows, elements or fields only
// the first and the last are shown, `rows` in all. 0 for no limit.
struct DisplaySize {
  std::size_t width = 0;
  std::size_t rows = 0;
};

// Which of `count` rows are shown: those before `gap`, and those from `gap` + `left` on.
struct Fold {
  Fold(std::size_t count, std::size_t most);
  std::size_t gap, left;
};

// "… 80 more rows".
std::string foldText(std::size_t count, std::string_view what);

// As many columns as fit into the width. A line below them counts the columns that are left out,
// and a line in their place the rows.
std::string alignedColumns(std::size_t rows, std::size_t columns,
                           const std::function<std::string(std::size_t, std::size_t)>& textAt,
                           std::size_t indent, const DisplaySize& size);

}  // namespace hcy::tools
