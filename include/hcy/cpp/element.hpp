/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file element.hpp
 * @brief The array class for each C++ type. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ELEMENT_HPP
#define HCY_CPP_ELEMENT_HPP

#include <hcy/hcyclient.h>

#include <complex>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace hcyclient {

namespace detail {

template <class T>
struct IsCharacter : std::bool_constant<std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
                                        std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>
#ifdef __cpp_char8_t
                                        || std::is_same_v<T, char8_t>
#endif
                                        > {
};

// The class of arrays with elements of type T, and the type that stores the elements.
template <class T, class = void>
struct Element {
  static constexpr bool exists = false;
};
template <class StoredAs, hcyClassID id>
struct ElementOf {
  static constexpr bool exists = true;
  static constexpr hcyClassID classId = id;
  using Stored = StoredAs;
};
template <>
struct Element<double> : ElementOf<double, hcyDOUBLE_CLASS> {};
template <>
struct Element<float> : ElementOf<float, hcySINGLE_CLASS> {};
template <>
struct Element<bool> : ElementOf<bool, hcyLOGICAL_CLASS> {};
template <>
struct Element<char16_t> : ElementOf<char16_t, hcyCHAR_CLASS> {};

template <std::size_t size, bool isSigned>
struct Integer;
template <>
struct Integer<1, false> : ElementOf<std::uint8_t, hcyUINT8_CLASS> {};
template <>
struct Integer<1, true> : ElementOf<std::int8_t, hcyINT8_CLASS> {};
template <>
struct Integer<2, false> : ElementOf<std::uint16_t, hcyUINT16_CLASS> {};
template <>
struct Integer<2, true> : ElementOf<std::int16_t, hcyINT16_CLASS> {};
template <>
struct Integer<4, false> : ElementOf<std::uint32_t, hcyUINT32_CLASS> {};
template <>
struct Integer<4, true> : ElementOf<std::int32_t, hcyINT32_CLASS> {};
template <>
struct Integer<8, false> : ElementOf<std::uint64_t, hcyUINT64_CLASS> {};
template <>
struct Integer<8, true> : ElementOf<std::int64_t, hcyINT64_CLASS> {};
template <class T>
struct Element<T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool> &&
                                   !IsCharacter<T>::value && sizeof(T) <= 8>>
    : Integer<sizeof(T), std::is_signed_v<T>> {};

// A complex number and the type of its parts; any other type is its own part.
template <class T>
struct Parts {
  using Part = T;
  static constexpr bool areTwo = false;
};
template <class T>
struct Parts<std::complex<T>> {
  using Part = T;
  static constexpr bool areTwo = true;
};
template <class T>
using Part = typename Parts<T>::Part;

// Whether values of this type may be dimensions.
template <class T>
constexpr bool isInteger =
    std::is_integral_v<T> && !std::is_same_v<T, bool> && !IsCharacter<T>::value;

template <class T>
constexpr bool isNumeric =
    Element<T>::exists && !std::is_same_v<T, bool> && !std::is_same_v<T, char16_t>;
// Whether an array can be made from values of this type.
template <class T>
constexpr bool isValue = Parts<T>::areTwo ? isNumeric<Part<T>> : Element<T>::exists;
template <class T>
using IfValue = std::enable_if_t<isValue<T>, int>;

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_ELEMENT_HPP
