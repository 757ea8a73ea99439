/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file sequence.hpp
 * @brief Which C++ types are lists of values. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SEQUENCE_HPP
#define HCY_CPP_SEQUENCE_HPP

#include <cstddef>
#include <hcy/cpp/element.hpp>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

namespace hcyclient {

class Array;

namespace detail {

// The value type of a range. A matrix of another library that has data() and size() is not a range,
// and must not become a column.
template <class R>
using RangeValue =
    typename std::iterator_traits<decltype(std::begin(std::declval<const R&>()))>::value_type;

template <class R, class = void>
struct Sequence {
  static constexpr bool isContiguous = false;
};
template <class R>
struct Sequence<R, std::void_t<RangeValue<R>, decltype(std::size(std::declval<const R&>())),
                               decltype(*std::data(std::declval<const R&>()))>> {
  using Value =
      std::remove_cv_t<std::remove_reference_t<decltype(*std::data(std::declval<const R&>()))>>;
  static constexpr bool isContiguous = std::is_same_v<Value, RangeValue<R>> && isValue<Value>;
};

// A vector or matrix of Eigen, which may have strides: hcyclient_eigen.hpp converts it.
template <class M, class = void>
constexpr bool isMatrix = false;
template <class M>
constexpr bool isMatrix<M, std::void_t<decltype(std::declval<const M&>().rows()),
                                       decltype(std::declval<const M&>().cols())>> = true;
template <class M>
using IfMatrix = std::enable_if_t<isMatrix<M> && !std::is_base_of_v<Array, M>, int>;

// A std::vector, std::array, std::span, Span or C++ array of values, but not a string.
template <class R>
constexpr bool isSequence =
    Sequence<R>::isContiguous && !isMatrix<R> && !std::is_base_of_v<Array, R> &&
    !std::is_convertible_v<const R&, std::u16string_view>;
template <class R>
using IfSequence = std::enable_if_t<isSequence<R>, int>;

// The value type of an iterator.
template <class Iterator, class = void>
struct Pointed {
  static constexpr bool isValue = false;
};
template <class Iterator>
struct Pointed<Iterator, std::void_t<typename std::iterator_traits<Iterator>::iterator_category>> {
  using Value = typename std::iterator_traits<Iterator>::value_type;
  static constexpr bool isValue = detail::isValue<Value>;
};
template <class Iterator>
using IfIterator = std::enable_if_t<Pointed<Iterator>::isValue, int>;

// Whether a range may be iterated over again, so that references to its elements stay valid.
template <class R, class = void>
constexpr bool isMultiPass = false;
template <class R>
constexpr bool isMultiPass<R, std::void_t<typename std::iterator_traits<decltype(std::begin(
                                  std::declval<const R&>()))>::iterator_category>> =
    std::is_base_of_v<std::forward_iterator_tag,
                      typename std::iterator_traits<decltype(std::begin(
                          std::declval<const R&>()))>::iterator_category>;

// A range of ranges of values.
template <class Rows, class = void>
struct RowsOf {
  static constexpr bool exist = false;
};
template <class Rows>
struct RowsOf<Rows, std::void_t<RangeValue<RangeValue<Rows>>>> {
  using Value = RangeValue<RangeValue<Rows>>;
  static constexpr bool exist = isValue<Value>;
};
template <class Rows>
using IfRows = std::enable_if_t<RowsOf<Rows>::exist, int>;

// A range of any values, but not an Array: it is not clear what its elements should become.
template <class R>
using IfRange =
    std::enable_if_t<!std::is_base_of_v<Array, R> && !std::is_same_v<RangeValue<R>, void>, int>;

template <class A>
using IfArray = std::enable_if_t<std::is_same_v<A, Array>, int>;

template <class T>
using IfName = std::enable_if_t<std::is_convertible_v<const T&, std::string_view>, int>;

template <class... T>
using IfIntegers = std::enable_if_t<(std::is_integral_v<T> && ...), int>;

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_SEQUENCE_HPP
