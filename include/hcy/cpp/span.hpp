/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file span.hpp
 * @brief Views of the storage of an array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_SPAN_HPP
#define HCY_CPP_SPAN_HPP

#include <cstddef>
#include <hcy/cpp/error.hpp>
#include <iterator>
#include <string>
#include <type_traits>

#if __cplusplus >= 202002L
#include <ranges>
#endif

namespace hcyclient {

/**
 * @defgroup cpp_spans C++: spans
 * @brief Views of the storage of an array.
 * @{
 */

/** A view of the elements of an array in its own storage. It owns nothing, and is valid as long as
 *  a data pointer of the C interface: until the number of elements changes or the array is
 *  destroyed. It has the members of std::span, and converts to std::span in C++20. */
template <class T>
class Span {
 public:
  using element_type = T;                                   /**< const or not */
  using value_type = std::remove_cv_t<T>;                   /**< without const */
  using size_type = std::size_t;                            /**< of sizes and indices */
  using difference_type = std::ptrdiff_t;                   /**< between iterators */
  using pointer = T*;                                       /**< to an element */
  using reference = T&;                                     /**< to an element */
  using iterator = T*;                                      /**< elements are contiguous */
  using reverse_iterator = std::reverse_iterator<iterator>; /**< from the last element */

  Span() noexcept = default;
  /** A view of `size` elements, starting at `data`. */
  Span(T* data, std::size_t size) noexcept : data_(data), size_(size) {}
  /** A read-only view. */
  operator Span<const T>() const noexcept { return {data_, size_}; }

  T* data() const noexcept { return data_; }                            /**< The first element. */
  std::size_t size() const noexcept { return size_; }                   /**< How many there are. */
  std::size_t size_bytes() const noexcept { return size_ * sizeof(T); } /**< Bytes they take. */
  bool empty() const noexcept { return size_ == 0; } /**< Whether there are none. */
  T* begin() const noexcept { return data_; }        /**< The first element. */
  T* end() const noexcept { return data_ + size_; }  /**< After the last element. */
  /** The last element. */
  reverse_iterator rbegin() const noexcept { return reverse_iterator(end()); }
  /** Before the first element. */
  reverse_iterator rend() const noexcept { return reverse_iterator(begin()); }
  T& operator[](std::size_t i) const noexcept { return data_[i]; } /**< Element i, unchecked. */
  T& front() const noexcept { return data_[0]; }                   /**< The first, unchecked. */
  T& back() const noexcept { return data_[size_ - 1]; }            /**< The last, unchecked. */
  /** Element i; throws UsageError if the Span has no such element. */
  T& at(std::size_t i) const {
    if (i >= size_) throw noElement(i);
    return data_[i];
  }

  /** The first `count` elements, unchecked. */
  Span first(std::size_t count) const noexcept { return {data_, count}; }
  /** The last `count` elements, unchecked. */
  Span last(std::size_t count) const noexcept { return {data_ + (size_ - count), count}; }
  /** The elements starting at `offset`, unchecked. */
  Span subspan(std::size_t offset) const noexcept { return {data_ + offset, size_ - offset}; }
  /** `count` elements starting at `offset`, unchecked: column j of a matrix is
   *  `subspan(j * rows, rows)`. */
  Span subspan(std::size_t offset, std::size_t count) const noexcept {
    return {data_ + offset, count};
  }

 private:
  UsageError noElement(std::size_t i) const {
    return UsageError("the Span of " + std::to_string(size_) + " has no element " +
                      std::to_string(i));
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
};

/** @} */

}  // namespace hcyclient

#if __cplusplus >= 202002L
/** The elements outlive the Span. */
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<hcyclient::Span<T>> = true;
/** A Span is cheap to copy. */
template <class T>
inline constexpr bool std::ranges::enable_view<hcyclient::Span<T>> = true;
#endif

#endif  // HCY_CPP_SPAN_HPP
