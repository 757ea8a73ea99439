// SPDX-License-Identifier: Apache-2.0
//
// Rows of columns that are aligned to the right.

#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace hcy::tools {

// As many columns as go into `width`, 0 for all; what is left out is said below them.
std::string alignedColumns(std::size_t rows, std::size_t columns,
                           const std::function<std::string(std::size_t, std::size_t)>& textAt,
                           std::size_t indent, std::size_t width);

}  // namespace hcy::tools
