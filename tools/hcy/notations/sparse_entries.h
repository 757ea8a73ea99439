// SPDX-License-Identifier: Apache-2.0
//
// The stored elements of sparse arrays.

#pragma once

#include <complex>
#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <type_traits>
#include <vector>

namespace hcy::tools {

// In column-major order. The array must have passed requireWhole(). Its dimensions may call for
// more elements than a full array can have.
template <class T>
std::vector<hcyclient::Entry<T>> entriesOf(const hcyclient::Array& array) {
  hcyArray* const handle = array.get();
  const std::size_t* const starts = hcyGetJc(handle);
  const std::size_t* const rows = hcyGetIr(handle);
  const std::size_t columns = array.columns();
  std::vector<hcyclient::Entry<T>> entries;
  entries.reserve(starts[columns]);
  for (std::size_t column = 0; column < columns; ++column) {
    for (std::size_t i = starts[column]; i < starts[column + 1]; ++i) {
      if constexpr (std::is_same_v<T, bool>) {
        entries.push_back({rows[i], column, hcyGetLogicals(handle)[i]});
      } else if constexpr (std::is_same_v<T, double>) {
        entries.push_back({rows[i], column, hcyGetPr(handle)[i]});
      } else {
        entries.push_back({rows[i], column, {hcyGetPr(handle)[i], hcyGetPi(handle)[i]}});
      }
    }
  }
  return entries;
}

}  // namespace hcy::tools
