/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file array_elements.hpp
 * @brief The elements of an array: views, copies and conversions. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ARRAY_ELEMENTS_HPP
#define HCY_CPP_ARRAY_ELEMENTS_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/array_handle.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/element.hpp>
#include <hcy/cpp/sequence.hpp>
#include <hcy/cpp/shape.hpp>
#include <hcy/cpp/span.hpp>
#include <hcy/cpp/text.hpp>
#include <string>
#include <type_traits>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

template <class T>
struct Entry;

/** The elements of an array: views of its storage, and copies that are converted. A base of Array.
 */
class ArrayElements : public ArrayHandle {
 public:
  /** An element by its zero-based subscripts, or by its linear index alone: `at<double>(i, j)`,
   *  `at<std::complex<double>>(i)`. An element that a sparse array does not store is 0. The element
   * is converted to T. Throws UsageError if the array has no such element, T cannot represent it
   *  exactly, or the array does not hold numbers (code units, if T is char16_t); IncompleteReply if
   *  elements did not arrive. In a loop, span() is faster. */
  template <class T, class... More, detail::IfIntegers<More...> = 0>
  T at(Size i, More... more) const;

  /** The elements in the array's own storage: for a complex array, the real parts; for a sparse
   *  array, all values that there is room for (nzmax, but at most size()). Throws UsageError unless
   *  the array is of the class of T, IncompleteReply if elements did not arrive. */
  template <class T>
  Span<T> span() & {
    return elements<T>(roomToWrite());
  }
  /** The read-only overload. For a sparse array, only the stored values, whose number is the last
   *  column start. Otherwise the same. */
  template <class T>
  Span<const T> span() const& {
    return elements<T>(countToRead());
  }
  template <class T>
  Span<const T> span() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The imaginary parts in the array's own storage; empty for a real array, and for a complex one
   *  that has lost them by resize(). Otherwise the same as span(). */
  template <class T>
  Span<T> imaginary() & {
    return imaginaryElements<T>(roomToWrite());
  }
  /** The read-only overload, like span() const. */
  template <class T>
  Span<const T> imaginary() const& {
    return imaginaryElements<T>(countToRead());
  }
  template <class T>
  Span<const T> imaginary() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** A copy of the elements in column-major order; for a sparse array, of the stored elements.
   * Numbers and logical values of another class are converted. The copy has both parts of complex
   * numbers if T is a std::complex, and only the real parts otherwise. toVector<std::string>()
   * copies the strings in a cell array. Throws UsageError if T cannot represent an element exactly
   * or the array is of another kind, IncompleteReply if elements did not arrive; for strings,
   * throws like toString(). */
  template <class T>
  std::vector<T> toVector() const;

  /** The element of a 1-by-1 array as a T: `scalar<int>()` of the double 3 is 3. Throws UsageError
   *  if the array does not have exactly one element, and throws like at(). */
  template <class T>
  T scalar() const;
  /** The text of a char array, in column-major order, as UTF-8; empty if there are no elements.
   *  Throws UsageError if the array is of another class or ends in a surrogate without a code unit
   *  after it, IncompleteReply if code units did not arrive. Other unpaired surrogates become
   *  bytes that are not valid UTF-8, as with hcyArrayToString(). Unlike there, a NUL does not end
   *  the string. */
  std::string toString() const {
    const Span<const char16_t> units = span<char16_t>();
    return detail::utf8Of(units.data(), units.size());
  }

  /** The first element as a double: for a complex array, its real part; for a sparse array, the
   *  first stored element. Throws UsageError if the array has no elements or is a cell or struct
   * array, IncompleteReply if any element did not arrive. 64-bit integers beyond 2^53 are rounded.
   */
  double scalar() const {
    requireWhole();
    const double value = hcyGetScalar(handle());
    // A positive value is right for every class. 0 may mean that there is none, and uint8 is read
    // as signed.
    if (value > 0) return value;
    if (size() == 0 || isCell() || isStruct()) throw detail::noNumber(get());
    return is<std::uint8_t>() ? span<std::uint8_t>()[0] : value;
  }

  /** The zero-based rows of the elements of a sparse array, as many as span() returns. Throws
   * UsageError if the array is not sparse, and IncompleteReply if values did not arrive or if its
   * column starts and rows do not describe a sparse array of its dimensions. */
  Span<std::size_t> rowIndices() & { return rowsOf(roomToWrite()); }
  /** The read-only overload; as many elements as span() const returns. */
  Span<const std::size_t> rowIndices() const& { return rowsOf(countToRead()); }
  Span<const std::size_t> rowIndices() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The column starts of a sparse array, columns() + 1 of them. Throws like rowIndices(). */
  Span<std::size_t> columnStarts() & { return starts(); }
  /** The read-only overload. */
  Span<const std::size_t> columnStarts() const& { return starts(); }
  Span<const std::size_t> columnStarts() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The stored elements of a sparse array, column by column. Throws UsageError if the program has
   *  set column starts or rows that are outside the array, and throws like span() and rowIndices().
   */
  template <class T>
  std::vector<Entry<T>> entries() const;

 private:
  friend class Array;
  friend class detail::Printer;

  ArrayElements() noexcept = default;
  ArrayElements(ArrayElements&&) noexcept = default;
  ArrayElements& operator=(ArrayElements&&) noexcept = default;
  ~ArrayElements() = default;

  // The number of elements to read: in a sparse array, the stored ones. Column starts that the
  // program has set may name more than there is room for.
  std::size_t countToRead() const {
    if (!isSparse()) return size();
    requireWhole();
    return std::min(hcyGetJc(get())[columns()], hcyGetNzmax(get()));
  }

  // The number of elements to write: in a sparse array, all that there is room for. In a reply,
  // there may be fewer values than row indices after the stored elements; both get one length.
  std::size_t roomToWrite() {
    const std::size_t stored = countToRead();
    if (!isSparse()) return stored;
    const std::size_t room = std::min(hcyGetNzmax(get()), size());
    if (room <= stored) return stored;
    hcySetNzmax(get(), room);
    return room;
  }

  void requireSparse() const {
    if (!isSparse()) throw wrongClass("sparse");
    requireWhole();
  }

  Span<std::size_t> rowsOf(std::size_t count) const {
    requireSparse();
    return {hcyGetIr(get()), count};
  }

  Span<std::size_t> starts() const {
    requireSparse();
    return {hcyGetJc(get()), columns() + 1};
  }

  template <class T>
  T* dataOf() const {
    if constexpr (std::is_same_v<T, bool>) {
      return hcyGetLogicals(handle());
    } else if constexpr (std::is_same_v<T, char16_t>) {
      return reinterpret_cast<char16_t*>(hcyGetChars(handle()));
    } else {
      return static_cast<T*>(hcyGetData(handle()));
    }
  }

  template <class T>
  void requireClass() const {
    static_assert(detail::Element<T>::exists, "arrays cannot hold elements of this type");
    static_assert(std::is_same_v<T, typename detail::Element<T>::Stored>,
                  "the elements are stored as the <cstdint> type of this width");
    if (!is<T>()) throw wrongClass(nameOf(classOf<T>()));
  }

  template <class T>
  Span<T> elements(std::size_t count) const {
    requireClass<T>();
    T* const first = dataOf<T>();
    if (first == nullptr || isComplex()) requireWhole();
    return {first, first == nullptr ? 0 : count};
  }

  template <class T>
  Span<T> imaginaryElements(std::size_t count) const {
    static_assert(detail::isNumeric<T>, "only numbers have imaginary parts");
    requireClass<T>();
    requireWhole();
    T* const first = static_cast<T*>(hcyGetImagData(handle()));
    return {first, first == nullptr ? 0 : count};
  }

  std::size_t storedIndex(std::size_t i) const;
  template <class Use>
  auto withElementType(const Use& use) const;
  template <class T, bool onlyReal, class Take>
  void convertEach(const Take& take) const;
  template <class T>
  bool readExactly(std::size_t i, T& value) const;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ARRAY_ELEMENTS_HPP
