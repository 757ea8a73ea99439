/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file input.hpp
 * @brief Values that can be passed as arrays. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_INPUT_HPP
#define HCY_CPP_INPUT_HPP

#include <hcy/cpp/array.hpp>
#include <hcy/cpp/text.hpp>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

/** An argument of a call or an element for a container: an Array, which is only referred to, or a
 *  value that an Array is made from. Use it only in an argument list. */
class Input {
 public:
  /** Refers to an array, which must outlive the full expression. */
  Input(const Array& array) : handle_(array.handle()) {}
  /** Makes an array from a value. */
  template <class T, std::enable_if_t<!std::is_base_of_v<Array, std::decay_t<T>> &&
                                          !std::is_same_v<Input, std::decay_t<T>> &&
                                          std::is_constructible_v<Array, T&&>,
                                      int> = 0>
  Input(T&& value) : made_(std::forward<T>(value)), handle_(made_.handle()) {}
  /** Makes a column. */
  template <class T, detail::IfValue<T> = 0>
  Input(std::initializer_list<T> values) : made_(values), handle_(made_.handle()) {}
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input() = default;

  /** The handle. */
  hcyArray* get() const noexcept { return handle_; }

 private:
  Array made_;
  hcyArray* handle_;
};

namespace detail {

template <class T>
using IfInput = std::enable_if_t<std::is_constructible_v<Input, T&&>, int>;

// Refuses what cannot be an input of a call. A class, because gcc does not look into a function
// once it has seen an error.
template <class... Values>
struct RequireInputs {
  static_assert((std::is_constructible_v<Input, Values&&> && ...),
                "an input is an Array, or a value that an Array can be made from: write "
                "Array::structOf(map), Array::cellOf(list), Array::fromRows(rows), "
                "Array::sparse<T>(rows, columns, entries), toArray(matrix) of "
                "hcyclient_eigen.hpp for an Eigen matrix, static_cast<int>(value) for an enum, "
                "static_cast<double>(value) for a long double");
};

}  // namespace detail

/** A named value for Array::structOf(). */
struct Field {
  CString name; /**< name of the field */
  Input value;  /**< value of the field */
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_INPUT_HPP
