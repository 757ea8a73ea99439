/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file instead.hpp
 * @brief What to write for C++ types that do not convert to an Array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_INSTEAD_HPP
#define HCY_CPP_INSTEAD_HPP

#include <complex>
#include <hcy/cpp/element.hpp>
#include <hcy/cpp/sequence.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

template <class T>
struct Entry;

namespace detail {

// Only the types that are not elements, unlike char16_t.
template <class T>
using IfCharacter = std::enable_if_t<IsCharacter<T>::value && !Element<T>::exists, int>;
template <class T>
using IfLongDouble =
    std::enable_if_t<std::is_same_v<T, long double> || std::is_same_v<T, std::complex<long double>>,
                     int>;
template <class T>
using IfEnum = std::enable_if_t<std::is_enum_v<T>, int>;

// Rows whose numbers could also be the dimensions of a shape.
template <class T>
using IfSize = std::enable_if_t<isInteger<T>, int>;
// Two rows, of which the second cannot be a shape, or more than two rows.
template <class Second, class... More>
using IfRowLists = std::enable_if_t<(!isInteger<Second> || sizeof...(More) > 0), int>;

template <class T>
constexpr bool isPair = false;
template <class Name, class Value>
constexpr bool isPair<std::pair<Name, Value>> =
    std::is_convertible_v<const Name&, std::string_view>;

template <class T>
constexpr bool isEntry = false;
template <class T>
constexpr bool isEntry<Entry<T>> = true;

// Whether an Array is made from this type in another way: a string, a list of strings or logical
// values, a matrix, or a type that converts itself.
template <class R, class = void>
constexpr bool convertsItself = false;
template <class R>
constexpr bool convertsItself<R, std::void_t<decltype(std::declval<const R&>().operator Array())>> =
    true;
template <class R>
constexpr bool isHandled = std::is_base_of_v<Array, R> || isSequence<R> || isMatrix<R> ||
                           convertsItself<R> || std::is_convertible_v<const R&, std::string_view> ||
                           std::is_convertible_v<const R&, std::u16string_view> ||
                           std::is_convertible_v<const R&, std::string> ||
                           std::is_convertible_v<const R&, const std::vector<std::string>&> ||
                           std::is_convertible_v<const R&, const std::vector<bool>&>;

enum class Instead { nothing, utf8, structOf, sparse, fromRows, iterators, cellOf };

template <class R, class = void>
constexpr Instead insteadOf = Instead::nothing;
template <class R>
constexpr Instead insteadOf<R, std::void_t<RangeValue<R>>> =
    isHandled<R>                        ? Instead::nothing
    : IsCharacter<RangeValue<R>>::value ? Instead::utf8
    : isPair<RangeValue<R>>             ? Instead::structOf
    : isEntry<RangeValue<R>>            ? Instead::sparse
    : RowsOf<R>::exist                  ? Instead::fromRows
    : isValue<RangeValue<R>>            ? Instead::iterators
                                        : Instead::cellOf;

template <class R, Instead instead>
using IfInstead = std::enable_if_t<insteadOf<R> == instead, int>;

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_INSTEAD_HPP
