/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file sparse.hpp
 * @brief Sparse arrays as lists of entries. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SPARSE_HPP
#define HCY_CPP_SPARSE_HPP

#include <algorithm>
#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/describe.hpp>
#include <string>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/** A stored element of a sparse array, with zero-based row and column. */
template <class T>
struct Entry {
  std::size_t row;    /**< zero-based row */
  std::size_t column; /**< zero-based column */
  T value;            /**< the stored value */
};

template <class T>
Array Array::sparse(Size rows, Size columns, Size nzmax) {
  const std::size_t shape[] = {rows, columns};
  detail::requireSizes(shape, 2, true);
  if (nzmax > detail::largestSize) {
    throw UsageError("there are too many stored elements: " + std::to_string(nzmax));
  }
  if constexpr (std::is_same_v<T, bool>) {
    return adopt(hcyCreateSparseLogicalMatrix(rows, columns, nzmax));
  } else {
    static_assert(std::is_same_v<detail::Part<T>, double>, "sparse arrays are double or logical");
    return adopt(hcyCreateSparse(rows, columns, nzmax, complexityOf<T>()));
  }
}

template <class T>
Array Array::sparse(Size rows, Size columns, std::vector<Entry<T>> entries) {
  std::sort(entries.begin(), entries.end(), [](const Entry<T>& a, const Entry<T>& b) {
    return a.column != b.column ? a.column < b.column : a.row < b.row;
  });
  Array made = sparse<T>(rows, columns, entries.size());
  const Span<std::size_t> starts = made.columnStarts();
  const Span<std::size_t> rowOf = made.rowIndices();
  const auto values = made.span<detail::Part<T>>();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Entry<T>& entry = entries[i];
    if (entry.row >= rows || entry.column >= columns) {
      throw UsageError("an entry is outside the array: (" + std::to_string(entry.row) + ", " +
                       std::to_string(entry.column) + ") in " + detail::described(made.get()));
    }
    if (i > 0 && entry.row == rowOf[i - 1] && entry.column == entries[i - 1].column) {
      throw UsageError("two entries have the same row and column: (" + std::to_string(entry.row) +
                       ", " + std::to_string(entry.column) + ")");
    }
    rowOf[i] = entry.row;
    starts[entry.column + 1] = i + 1;
    if constexpr (detail::Parts<T>::areTwo) {
      values[i] = entry.value.real();
      hcyGetPi(made.get())[i] = entry.value.imag();
    } else {
      values[i] = entry.value;
    }
  }
  // A column without entries starts where the previous one ends.
  for (std::size_t j = 0; j < columns; ++j) starts[j + 1] = std::max(starts[j + 1], starts[j]);
  return made;
}

template <class T>
std::vector<Entry<T>> ArrayElements::entries() const {
  const Span<const std::size_t> starts = columnStarts();
  const Span<const std::size_t> rowOf = rowIndices();
  const std::vector<T> values = toVector<T>();
  std::vector<Entry<T>> found;
  found.reserve(values.size());
  for (std::size_t j = 0; j < columns(); ++j) {
    if (starts[j] > starts[j + 1] || starts[j + 1] > std::min(values.size(), rowOf.size())) {
      throw UsageError("a column start of the sparse array is outside it");
    }
    for (std::size_t i = starts[j]; i < starts[j + 1]; ++i) {
      if (rowOf[i] >= rows()) throw UsageError("a row of the sparse array is outside it");
      found.push_back({rowOf[i], j, values[i]});
    }
  }
  return found;
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_SPARSE_HPP
