/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file input.hpp
 * @brief What a call or a container takes for an array. Included by hcyclient.hpp.
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

/** What a call or a container takes for one array: an Array, which it only looks at, or a value
 *  that an Array is made from on the way. To be written in the argument list itself. */
class Input {
 public:
  /** Looks at an array, which must outlive the full expression. */
  Input(const Array& array) : handle_(array.handle()) {}
  /** Makes an array. */
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

/** A named value for Array::structOf(). */
struct Field {
  CString name; /**< name of the field */
  Input value;  /**< what it holds */
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_INPUT_HPP
