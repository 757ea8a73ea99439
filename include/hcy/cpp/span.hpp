/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file span.hpp
 * @brief Views of the storage of an array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SPAN_HPP
#define HCY_CPP_SPAN_HPP

#include <cstddef>
#include <hcy/cpp/error.hpp>
#include <string>
#include <type_traits>

namespace hcyclient {

/**
 * @defgroup cpp_spans C++: spans
 * @brief Views of the storage of an array.
 * @{
 */

/** The elements of an array in its own storage. It owns nothing and stays valid as long as a data
 *  pointer of the C interface: until the number of elements changes or the array is destroyed. */
template <class T>
class Span {
 public:
  using element_type = T;                 /**< as seen, const or not */
  using value_type = std::remove_cv_t<T>; /**< as copied */
  using iterator = T*;                    /**< elements lie without gaps */

  Span() noexcept = default;
  /** Views `size` elements from `data` on. */
  Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  /** A view that cannot write. */
  operator Span<const T>() const noexcept { return {data_, size_}; }

  T* data() const noexcept { return data_; }                       /**< The first element. */
  std::size_t size() const noexcept { return size_; }              /**< How many there are. */
  bool empty() const noexcept { return size_ == 0; }               /**< Whether there are none. */
  T* begin() const noexcept { return data_; }                      /**< The first element. */
  T* end() const noexcept { return data_ + size_; }                /**< Behind the last element. */
  T& operator[](std::size_t i) const noexcept { return data_[i]; } /**< Element i, unchecked. */
  /** Element i; throws UsageError when there is none. */
  T& at(std::size_t i) const {
    if (i >= size_) throw UsageError("there is no element " + std::to_string(i));
    return data_[i];
  }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_SPAN_HPP
