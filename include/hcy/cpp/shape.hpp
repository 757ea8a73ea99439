/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file shape.hpp
 * @brief Sizes that an array can have. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SHAPE_HPP
#define HCY_CPP_SHAPE_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/error.hpp>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/** A dimension, an index or a number of elements, as a parameter: any integer type. A negative one
 *  throws UsageError. */
class Size {
 public:
  /** Takes over the value. */
  template <class T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
  constexpr Size(T value) : value_(static_cast<std::size_t>(value)) {
    if constexpr (std::is_signed_v<T>) {
      if (value < 0) throw UsageError("a size or an index is negative: " + std::to_string(value));
    }
  }
  /** The value. */
  constexpr operator std::size_t() const noexcept { return value_; }

 private:
  std::size_t value_;
};

/** Dimensions: rows, columns, and more. One dimension alone means n-by-1. They may be written in
 *  any integer type: `{rows, 3}`. */
class Shape : public std::vector<std::size_t> {
 public:
  Shape() = default;
  /** These dimensions; throws UsageError when one is negative. */
  template <class T, class = std::enable_if_t<std::is_integral_v<T>>>
  Shape(std::initializer_list<T> dimensions) {
    for (const T dimension : dimensions) push_back(Size(dimension));
  }
  /** The same of several integer types. */
  Shape(std::initializer_list<Size> dimensions) : vector(dimensions.begin(), dimensions.end()) {}
  /** The same dimensions. */
  Shape(std::vector<std::size_t> dimensions) noexcept : vector(std::move(dimensions)) {}
  /** `count` dimensions of 0. */
  explicit Shape(std::size_t count) : vector(count) {}
  /** `count` dimensions of one size. */
  Shape(Size count, Size value) : vector(count, value) {}
  /** The dimensions that two iterators lead through. */
  template <class Iterator, class = typename std::iterator_traits<Iterator>::iterator_category>
  Shape(Iterator first, Iterator last) {
    for (; first != last; ++first) push_back(Size(*first));
  }
};

/** @} */

namespace detail {

constexpr std::uint64_t largestSize = 2147483647;

// "2-by-3"; the first eight dimensions are enough to know an array by.
inline std::string shapeText(const std::size_t* dimensions, std::size_t count) {
  if (count == 1) return std::to_string(dimensions[0]) + "-by-1";
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, 8); ++i) {
    text += (i == 0 ? "" : "-by-") + std::to_string(dimensions[i]);
  }
  return count > 8 ? text + "-by-..." : text;
}

// Throws for sizes that the library refuses by an exception of its own. A sparse array may have any
// number of elements; an element of a struct array takes a place for each of its fields.
inline void requireSizes(const std::size_t* dimensions, std::size_t count, bool isSparse,
                         std::uint64_t placesPerElement = 1) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  bool fits = count <= largestSize;
  std::uint64_t places = placesPerElement;
  for (std::size_t i = 0; fits && i < count; ++i) {
    fits = dimensions[i] <= largestSize;
    places = dimensions[i] != 0 && places > most / dimensions[i] ? most : places * dimensions[i];
  }
  // A column takes a start, and the last one an end.
  if (isSparse && count > 1 && fits) fits = dimensions[1] < largestSize;
  if (fits && (isSparse || places <= largestSize)) return;
  const std::string fields =
      placesPerElement == 1 ? "" : " with " + std::to_string(placesPerElement) + " fields";
  throw UsageError("the size is larger than an array can be: " + shapeText(dimensions, count) +
                   fields);
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_SHAPE_HPP
