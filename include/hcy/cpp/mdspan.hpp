/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file mdspan.hpp
 * @brief Arrays as std::mdspan, if the standard library has it (C++23). Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_MDSPAN_HPP
#define HCY_CPP_MDSPAN_HPP

#if __cplusplus >= 202002L
#include <version>
#endif

#if defined(__cpp_lib_mdspan) || defined(DOXYGEN)
#include <array>
#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/error.hpp>
#include <mdspan>
#include <string>

namespace hcyclient {

/**
 * @addtogroup cpp_spans
 * @{
 */

/** A column-major view with `Rank` dimensions. */
template <class T, std::size_t Rank>
using Mdspan = std::mdspan<T, std::dextents<std::size_t, Rank>, std::layout_left>;

/** @} */

namespace detail {

// Dimensions that the array does not have are 1; extra dimensions of the array must be 1.
template <std::size_t Rank>
std::array<std::size_t, Rank> extentsOf(const Array& array) {
  if (array.isSparse()) {
    throw UsageError(described(array.get()) + " is not full: an mdspan cannot view it");
  }
  std::array<std::size_t, Rank> extents;
  extents.fill(1);
  const auto dimensions = array.dimensions();
  for (std::size_t i = 0; i < dimensions.size(); ++i) {
    if (i < Rank) {
      extents[i] = dimensions[i];
    } else if (dimensions[i] != 1) {
      throw UsageError(described(array.get()) + " does not fit an mdspan of " +
                       std::to_string(Rank) + " dimensions");
    }
  }
  return extents;
}

}  // namespace detail

/**
 * @addtogroup cpp_spans
 * @{
 */

/** The elements of an array in its own storage, for reading and writing; for a complex array, the
 *  real parts: `asMdspan<double>(a)[i, j]`. Valid as long as a Span. Dimensions beyond those of the
 *  array are 1. Throws UsageError if the array is sparse, is not of the class of T, or has further
 *  dimensions other than 1; IncompleteReply if elements did not arrive. */
template <class T, std::size_t Rank = 2>
Mdspan<T, Rank> asMdspan(Array& array) {
  const auto extents = detail::extentsOf<Rank>(array);
  return Mdspan<T, Rank>(array.span<T>().data(), extents);
}
/** The read-only overload. */
template <class T, std::size_t Rank = 2>
Mdspan<const T, Rank> asMdspan(const Array& array) {
  const auto extents = detail::extentsOf<Rank>(array);
  return Mdspan<const T, Rank>(array.span<T>().data(), extents);
}
template <class T, std::size_t Rank = 2>
void asMdspan(const Array&& array) = delete; /**< Keep the array: `Array x = ...;`. */

/** @} */

}  // namespace hcyclient
#endif

#endif  // HCY_CPP_MDSPAN_HPP
