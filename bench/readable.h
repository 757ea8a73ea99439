// SPDX-License-Identifier: Apache-2.0
//
// What an application sees of an array: its shape, and elements of the type that it computes with.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "workload.h"

namespace hcy::bench {

// The elements of a numeric or char array lie somewhere else; the numbers in the 1-by-1 elements
// of a cell array are collected here.
struct Readable {
  using Elements = std::variant<std::span<const double>, std::span<const std::int16_t>,
                                std::span<const std::uint64_t>, std::span<const std::int64_t>,
                                CellNumbers, std::u16string_view>;

  std::size_t rows = 0;
  std::size_t columns = 0;
  Elements elements;
};

Readable readableOf(const Workload& workload);

// Whether class, shape and every element are the same.
bool equals(const Readable& left, const Readable& right);

}  // namespace hcy::bench
