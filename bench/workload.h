// SPDX-License-Identifier: Apache-2.0
//
// What is sent and comes back: the data as an application has it before it builds a request.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hcy::bench {

// The numbers of 1-by-1 double arrays in a column of cells.
struct CellNumbers {
  std::vector<double> numbers;
};

// A column of numbers, a column of cells, a row of chars.
using Workload =
    std::variant<std::vector<double>, std::vector<std::int16_t>, std::vector<std::uint64_t>,
                 std::vector<std::int64_t>, CellNumbers, std::u16string>;

// By name, W1 to W9, or by kind and number of elements, such as "double:131072"; the kinds are
// double, int16, uint64, int64, cell, ascii and text. Throws std::invalid_argument for another
// text.
Workload workloadOf(std::string_view text);

}  // namespace hcy::bench
