/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file cell_iterator.hpp
 * @brief Iterates over the elements of a cell array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_CELL_ITERATOR_HPP
#define HCY_CPP_CELL_ITERATOR_HPP

#include <cstddef>
#include <iterator>

namespace hcyclient {

class Array;

/** @addtogroup cpp_arrays
 *  @{ */

/** Iterates over the elements of a cell array: see Array::begin(). */
class CellIterator {
 public:
  using iterator_category = std::input_iterator_tag; /**< each element is read once */
  using value_type = Array;                          /**< a handle to the element */
  using difference_type = std::ptrdiff_t;            /**< between indices */
  using pointer = void;                              /**< there is nothing to point to */
  using reference = Array;                           /**< a new handle each time */

  CellIterator() noexcept = default;
  /** At element i. */
  CellIterator(const Array& cell, std::size_t i) noexcept : cell_(&cell), i_(i) {}
  /** The element, as a new handle; throws like Array::operator[]. */
  Array operator*() const;
  /** To the next element. */
  CellIterator& operator++() noexcept {
    ++i_;
    return *this;
  }
  /** The same. */
  void operator++(int) noexcept { ++i_; }
  /** Whether both are at the same element. */
  friend bool operator==(CellIterator a, CellIterator b) noexcept { return a.i_ == b.i_; }
  /** Whether they are not. */
  friend bool operator!=(CellIterator a, CellIterator b) noexcept { return a.i_ != b.i_; }

 private:
  const Array* cell_ = nullptr;
  std::size_t i_ = 0;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_CELL_ITERATOR_HPP
