// SPDX-License-Identifier: Apache-2.0

#include "wire/sparse_storage.h"

#include <algorithm>
#include <cstdint>

namespace hcy {

std::optional<std::size_t> describedElements(const ArrayData& array) {
  if (array.dimensions.size() != 2) return std::nullopt;
  const std::uint64_t rows = array.dimensions[0];
  const std::uint64_t columns = array.dimensions[1];
  const auto& starts = array.sparse().jc();
  const auto& rowIndices = array.sparse().ir();
  if (static_cast<std::uint64_t>(starts.size()) <= columns || starts[0] != 0) return std::nullopt;
  const auto last = starts.begin() + static_cast<int>(columns);
  if (!std::is_sorted(starts.begin(), last + 1)) return std::nullopt;
  if (*last > static_cast<std::uint64_t>(rowIndices.size())) return std::nullopt;
  const bool areInside =
      std::all_of(rowIndices.begin(), rowIndices.begin() + static_cast<int>(*last),
                  [rows](std::uint64_t row) { return row < rows; });
  return areInside ? std::optional<std::size_t>(*last) : std::nullopt;
}

}  // namespace hcy
