/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file array_handle.hpp
 * @brief What an array says about itself. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ARRAY_HANDLE_HPP
#define HCY_CPP_ARRAY_HANDLE_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/element.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/sequence.hpp>
#include <hcy/cpp/shape.hpp>
#include <hcy/cpp/span.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hcyclient {

namespace detail {
class Printer;
}

/**
 * @defgroup cpp_arrays C++: arrays
 * @brief Arrays of the VORTEN language as C++ values.
 * @{
 */

class Input;
class Slot;

/** The handle of an array, and what it says about itself: class, dimensions and fields. A base of
 *  Array. All members except operator bool, get() and release() throw UsageError if there is no
 *  array. */
class ArrayHandle {
 public:
  /** Whether it holds an array: false after default construction, a move and release(). */
  explicit operator bool() const noexcept { return handle_ != nullptr; }
  /** The handle, which the Array still owns; null if the Array is empty. */
  hcyArray* get() const noexcept { return handle_.get(); }
  /** Returns the handle, which the caller then owns, and leaves the Array empty. */
  hcyArray* release() noexcept { return handle_.release(); }

  hcyClassID classId() const { return hcyGetClassID(handle()); }           /**< The class. */
  std::string_view className() const { return hcyGetClassName(handle()); } /**< Its name. */
  /** Whether the array, full or sparse, is of the class of T. */
  template <class T>
  bool is() const {
    return classId() == classOf<T>();
  }
  bool isText() const { return hcyIsChar(handle()); }       /**< Whether it is a char array. */
  bool isCell() const { return hcyIsCell(handle()); }       /**< Whether it is a cell array. */
  bool isStruct() const { return hcyIsStruct(handle()); }   /**< Whether it is a struct array. */
  bool isSparse() const { return hcyIsSparse(handle()); }   /**< Whether it is sparse. */
  bool isComplex() const { return hcyIsComplex(handle()); } /**< Whether it is complex. */
  bool isEmpty() const { return hcyIsEmpty(handle()); }     /**< Whether a dimension is 0. */

  std::size_t rows() const { return hcyGetM(handle()); }    /**< The first dimension. */
  std::size_t columns() const { return hcyGetN(handle()); } /**< The second dimension. */
  /** The product of the dimensions. */
  std::size_t size() const { return hcyGetNumberOfElements(handle()); }
  /** A copy of the dimensions; empty for an array of a reply whose dimensions did not arrive. */
  Shape shape() const {
    const std::size_t* const first = hcyGetDimensions(handle());
    return Shape(first, first + hcyGetNumberOfDimensions(handle()));
  }
  /** The dimensions in the array's own storage; valid until the shape changes or the array is
   *  destroyed. */
  Span<const std::size_t> dimensions() const& {
    return {hcyGetDimensions(handle()), hcyGetNumberOfDimensions(get())};
  }
  Span<const std::size_t> dimensions() const&& = delete; /**< Keep the array: `Array x = ...;`. */
  /** The linear index of an element with zero-based subscripts: `index(i, j)`, `index({i, j})`.
   *  Throws UsageError unless there is one subscript for each dimension, and each is less than its
   * dimension. */
  template <class... More, detail::IfIntegers<More...> = 0>
  std::size_t index(Size i, Size j, More... more) const {
    const std::size_t subscripts[] = {i, j, Size(more)...};
    return linearIndex(subscripts, 2 + sizeof...(more));
  }
  /** The same. */
  template <class T, detail::IfIntegers<T> = 0>
  std::size_t index(std::initializer_list<T> subscripts) const {
    constexpr std::size_t few = 8;
    if (subscripts.size() > few) return index(Shape(subscripts.begin(), subscripts.end()));
    std::size_t sizes[few] = {};
    std::transform(subscripts.begin(), subscripts.end(), sizes, [](T i) { return Size(i); });
    return linearIndex(sizes, subscripts.size());
  }
  /** The same. */
  std::size_t index(const Shape& subscripts) const {
    return linearIndex(subscripts.data(), subscripts.size());
  }

  /** The names of the fields; none if the array is not a struct array. */
  std::vector<std::string> fieldNames() const {
    std::vector<std::string> names(static_cast<std::size_t>(hcyGetNumberOfFields(handle())));
    for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = hcyGetFieldNameByNumber(handle(), static_cast<int>(i));
    }
    return names;
  }
  /** Whether it is a struct array with such a field. */
  bool hasField(const CString& field) const {
    return hcyGetFieldNumber(handle(), field.c_str()) >= 0;
  }

 private:
  friend class Array;
  friend class ArrayElements;
  friend class Input;
  friend class Slot;
  friend class detail::Printer;

  ArrayHandle() noexcept = default;
  ArrayHandle(ArrayHandle&&) noexcept = default;
  ArrayHandle& operator=(ArrayHandle&&) noexcept = default;
  ~ArrayHandle() = default;

  template <class T>
  static constexpr hcyClassID classOf() {
    return detail::Element<detail::Part<T>>::classId;
  }
  template <class T>
  static constexpr hcyComplexity complexityOf() {
    return detail::Parts<T>::areTwo ? hcyCOMPLEX : hcyREAL;
  }
  static std::string_view nameOf(hcyClassID classId) {
    constexpr std::string_view names[] = {"uint8",  "int8",  "uint16", "int16",  "uint32",  "int32",
                                          "uint64", "int64", "single", "double", "logical", "char"};
    return names[static_cast<std::size_t>(classId)];
  }

  hcyArray* handle() const {
    if (!handle_) throw UsageError("the Array is empty");
    return handle_.get();
  }

  UsageError wrongClass(std::string_view wanted) const { return detail::isNot(handle(), wanted); }

  void requireWhole() const {
    if (detail::isWhole(handle())) return;
    throw IncompleteReply("the array is incomplete: " + detail::lackOf(get()) +
                          detail::limitMayHaveCut);
  }

  std::size_t linearIndex(const std::size_t* subscripts, std::size_t count) const;

  std::unique_ptr<hcyArray, detail::Destroyer> handle_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ARRAY_HANDLE_HPP
