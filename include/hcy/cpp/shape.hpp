/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file shape.hpp
 * @brief Sizes and shapes of arrays. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SHAPE_HPP
#define HCY_CPP_SHAPE_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/element.hpp>
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

/** A parameter for a dimension, an index or a number of elements: any integer type converts to it.
 *  A negative number throws UsageError. */
class Size {
 public:
  /** Converts an integer. */
  template <class T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
  constexpr Size(T value) : value_(static_cast<std::size_t>(value)) {
    if constexpr (std::is_signed_v<T>) {
      if (value < 0) throw UsageError("negative size or index: " + std::to_string(value));
    }
  }
  /** The value. */
  constexpr operator std::size_t() const noexcept { return value_; }

 private:
  std::size_t value_;
};

/** Dimensions: rows, columns, and so on. One dimension alone means n-by-1. The dimensions may be of
 *  any integer type: `{rows, 3}`. */
class Shape : public std::vector<std::size_t> {
 public:
  Shape() = default;
  /** These dimensions; throws UsageError if one is negative. */
  template <class T, class = std::enable_if_t<std::is_integral_v<T>>>
  Shape(std::initializer_list<T> dimensions) {
    for (const T dimension : dimensions) push_back(Size(dimension));
  }
  /** The same with several integer types. */
  Shape(std::initializer_list<Size> dimensions) : vector(dimensions.begin(), dimensions.end()) {}
  /** The same dimensions. */
  Shape(std::vector<std::size_t> dimensions) noexcept : vector(std::move(dimensions)) {}
  /** The dimensions in a range of integers, such as a std::vector<int>, std::array, std::span or
   *  Array::dimensions(); throws UsageError if one is negative. */
  template <class R, class = std::enable_if_t<detail::isInteger<
                         std::decay_t<decltype(*std::begin(std::declval<const R&>()))>>>>
  Shape(const R& dimensions) : Shape(std::begin(dimensions), std::end(dimensions)) {}
  /** `count` dimensions of 0. */
  explicit Shape(std::size_t count) : vector(count) {}
  /** `count` dimensions of the same size. */
  Shape(Size count, Size value) : vector(count, value) {}
  /** The dimensions from `first` up to, but not including, `last`. */
  template <class Iterator, class = typename std::iterator_traits<Iterator>::iterator_category>
  Shape(Iterator first, Iterator last) {
    for (; first != last; ++first) push_back(Size(*first));
  }
};

/** @} */

namespace detail {

constexpr std::uint64_t largestSize = 2147483647;

// "2-by-3"; the first eight dimensions are enough to recognize an array.
inline std::string shapeText(const std::size_t* dimensions, std::size_t count) {
  if (count == 1) return std::to_string(dimensions[0]) + "-by-1";
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, 8); ++i) {
    text += (i == 0 ? "" : "-by-") + std::to_string(dimensions[i]);
  }
  return count > 8 ? text + "-by-..." : text;
}

// Throws UsageError for sizes for which the library would throw its own exception. A sparse array
// may have any number of elements; an element of a struct array takes a place for each field.
inline void requireSizes(const std::size_t* dimensions, std::size_t count, bool isSparse,
                         std::uint64_t placesPerElement = 1) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  bool fits = count <= largestSize;
  std::uint64_t places = placesPerElement;
  for (std::size_t i = 0; fits && i < count; ++i) {
    fits = dimensions[i] <= largestSize;
    places = dimensions[i] != 0 && places > most / dimensions[i] ? most : places * dimensions[i];
  }
  // There is a start for each column, and an end for the last one.
  if (isSparse && count > 1 && fits) fits = dimensions[1] < largestSize;
  if (fits && (isSparse || places <= largestSize)) return;
  const std::string fields =
      placesPerElement == 1 ? "" : " with " + std::to_string(placesPerElement) + " fields";
  throw UsageError("an array cannot be this large: " + shapeText(dimensions, count) + fields);
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_SHAPE_HPP
