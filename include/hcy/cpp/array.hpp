/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file array.hpp
 * @brief Arrays of the VORTEN language. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_ARRAY_HPP
#define HCY_CPP_ARRAY_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <hcy/cpp/array_elements.hpp>
#include <hcy/cpp/cell_iterator.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/element.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/instead.hpp>
#include <hcy/cpp/sequence.hpp>
#include <hcy/cpp/shape.hpp>
#include <hcy/cpp/text.hpp>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

/** @addtogroup cpp_arrays
 *  @{ */

class Fields;
class Input;
class Outputs;
class Slot;
struct Field;

/**
 * An array.
 *
 * Each C++ type corresponds to one class: double to "double", float to "single", bool to "logical",
 * char16_t to "char", and an integer type to the integer class of its width and sign (so `2` makes
 * an int32, and `2.0` a double). std::complex of a numeric type is the same class with imaginary
 * parts. Strings are UTF-8 in C++ and UTF-16 in arrays.
 *
 * An Array that was default-constructed, moved from or released is empty. It can be assigned to,
 * destroyed and tested; anything else throws UsageError.
 *
 * Making an array throws UsageError if a size is over 2147483647: a dimension, the number of
 * elements, the number of fields times elements, or, in a sparse array, the number of stored
 * elements or of columns plus one. The number of elements of a sparse array may be larger.
 *
 * If an array of a reply is incomplete, reading its elements throws IncompleteReply, and so does
 * changing its shape or fields. Its class, dimensions and field names can be read.
 */
class Array : public ArrayElements {
  template <class T>
  using List = std::initializer_list<T>;

 public:
  /** Makes an empty Array, which holds no array. */
  Array() noexcept = default;
  Array(const Array&) = delete;            /**< Write a.copy(). */
  Array& operator=(const Array&) = delete; /**< Write a.copy(). */
  /** Takes over the array of `other`, which is then empty. */
  Array(Array&& other) noexcept = default;
  /** Takes over the array of `other`, which is then empty. */
  Array& operator=(Array&& other) noexcept = default;
  ~Array() = default;

  /** A 1-by-1 array of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  Array(T value) {
    if constexpr (std::is_same_v<T, double>) {
      handle_.reset(hcyCreateDoubleScalar(value));
    } else if constexpr (std::is_same_v<T, bool>) {
      handle_.reset(hcyCreateLogicalScalar(value));
    } else {
      *this = zeros<T>(1, 1);
      assign(&value, 1);
    }
  }

  /** A column of the class of the elements, from a std::vector, std::array, std::span, Span or C++
   *  array. */
  template <class R, detail::IfSequence<R> = 0>
  Array(const R& values) : Array(std::data(values), {std::size(values), 1}) {}
  /** A column of the values in an initializer list. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values) : Array(values.begin(), {values.size(), 1}) {}
  /** A logical 1-by-1 array, from an element of a std::vector<bool>. */
  Array(const std::vector<bool>::reference& value) : Array(static_cast<bool>(value)) {}
  /** A logical column. */
  Array(const std::vector<bool>& values) : Array(values.begin(), values.end()) {}
  /** A column of the values from `first` up to, but not including, `last`. */
  template <class Iterator, detail::IfIterator<Iterator> = 0>
  Array(Iterator first, Iterator last);

  /** An array of this shape, filled in column-major order. Throws UsageError unless there are as
   *  many values as elements. */
  template <class R, detail::IfSequence<R> = 0>
  Array(const R& values, const Shape& shape)
      : Array(filled(std::data(values), std::size(values), shape)) {}
  /** The same from the values in an initializer list. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values, const Shape& shape)
      : Array(filled(values.begin(), values.size(), shape)) {}
  /** The same from a vector of bool. */
  Array(const std::vector<bool>& values, const Shape& shape)
      : Array(filled(values.begin(), values.size(), shape)) {}
  /** The same from a pointer to as many values as the shape has elements. The pointer may be null
   *  only if there are none. */
  template <class T, detail::IfValue<T> = 0>
  Array(const T* data, const Shape& shape) : Array(zeros<T>(shape)) {
    if (data == nullptr && size() != 0) throw UsageError("the pointer to the values is null");
    assign(data, size());
  }

  /** The same with the dimensions as arguments: `Array(values, rows, columns)`. */
  template <class R, class... More, detail::IfSequence<R> = 0, detail::IfIntegers<More...> = 0>
  Array(const R& values, Size rows, Size columns, More... more)
      : Array(values, Shape{rows, columns, Size(more)...}) {}
  /** The same from the values in an initializer list. */
  template <class T, class... More, detail::IfValue<T> = 0, detail::IfIntegers<More...> = 0>
  Array(std::initializer_list<T> values, Size rows, Size columns, More... more)
      : Array(values, Shape{rows, columns, Size(more)...}) {}
  /** The same from a vector of bool. */
  template <class... More, detail::IfIntegers<More...> = 0>
  Array(const std::vector<bool>& values, Size rows, Size columns, More... more)
      : Array(values, Shape{rows, columns, Size(more)...}) {}
  /** The same from a pointer to as many values as the shape has elements. */
  template <class T, class... More, detail::IfValue<T> = 0, detail::IfIntegers<More...> = 0>
  Array(const T* data, Size rows, Size columns, More... more)
      : Array(data, Shape{rows, columns, Size(more)...}) {}

  /** A 1-by-n char array from UTF-8; 0-by-0 from an empty string. Throws UsageError if the string
   *  is not well-formed UTF-8 (RFC 3629). */
  Array(std::string_view text) {
    const std::size_t length = detail::utf16Length(text);
    *this = zeros<char16_t>(length == 0 ? 0 : 1, length);
    if (length != 0) detail::writeUtf16(text, dataOf<char16_t>(), length);
  }
  /** A 1-by-n char array from UTF-8. */
  Array(const std::string& text) : Array(std::string_view(text)) {}
  /** A 1-by-n char array from NUL-terminated UTF-8. Throws UsageError if the pointer is null. */
  Array(const char* text) : Array(std::string_view(detail::notNull(text))) {}
  /** A 1-by-n char array of these code units; 0-by-0 from none. */
  Array(std::u16string_view units) {
    *this = zeros<char16_t>(units.empty() ? 0 : 1, units.size());
    std::copy(units.begin(), units.end(), dataOf<char16_t>());
  }
  /** A 1-by-n char array of these code units. */
  Array(const std::u16string& units) : Array(std::u16string_view(units)) {}
  /** A 1-by-n char array of NUL-terminated code units. Throws UsageError if the pointer is null. */
  Array(const char16_t* units) : Array(std::u16string_view(detail::notNull(units))) {}
#ifdef __cpp_char8_t
  /** A 1-by-n char array from UTF-8. */
  Array(std::u8string_view text)
      : Array(std::string_view(reinterpret_cast<const char*>(text.data()), text.size())) {}
  /** A 1-by-n char array from UTF-8. */
  Array(const std::u8string& text) : Array(std::u8string_view(text)) {}
  /** A 1-by-n char array from NUL-terminated UTF-8. Throws UsageError if the pointer is null. */
  Array(const char8_t* text) : Array(std::u8string_view(detail::notNull(text))) {}
#endif
  /** A column of cells, each holding a string. */
  Array(const std::vector<std::string>& texts);

  /** @name Deleted constructors, and what to write instead
   *  @{ */
  Array(std::nullptr_t) = delete; /**< Null is not a string. */
  Array(const Outputs&) = delete; /**< Write context.call(...), or context.feval(...)[0]. */
  template <class T, detail::IfCharacter<T> = 0>
  Array(T) = delete; /**< Write a string in double quotes: "c". */
  template <class T, detail::IfLongDouble<T> = 0>
  Array(T) = delete; /**< No class holds a long double: write static_cast<double>(value). */
  template <class T, detail::IfEnum<T> = 0>
  Array(T) = delete; /**< Convert the enum to a number: write static_cast<int>(value). */
  template <class T, detail::IfSize<T> = 0>
  Array(std::initializer_list<std::initializer_list<T>>) = delete; /**< Write fromRows(rows). */
  template <class T, class U, class... More, detail::IfRowLists<U, More...> = 0>
  Array(List<T>, List<U>, List<More>...) = delete; /**< Write fromRows(rows). */
  template <class Matrix, detail::IfMatrix<Matrix> = 0>
  Array(const Matrix&) = delete; /**< Include hcyclient_eigen.hpp, and write toArray(matrix). */
  template <class R, detail::IfInstead<R, detail::Instead::utf8> = 0>
  Array(const R&) = delete; /**< Convert the characters to a std::string in UTF-8. */
  template <class R, detail::IfInstead<R, detail::Instead::structOf> = 0>
  Array(const R&) = delete; /**< Write Array::structOf(map). */
  template <class R, detail::IfInstead<R, detail::Instead::sparse> = 0>
  Array(const R&) = delete; /**< Write Array::sparse<T>(rows, columns, entries). */
  template <class R, detail::IfInstead<R, detail::Instead::fromRows> = 0>
  Array(const R&) = delete; /**< Write Array::fromRows(rows). */
  template <class R, detail::IfInstead<R, detail::Instead::iterators> = 0>
  Array(const R&) = delete; /**< Write Array(range.begin(), range.end()). */
  template <class R, detail::IfInstead<R, detail::Instead::cellOf> = 0>
  Array(const R&) = delete; /**< Write Array::cellOf(list), or convert the elements. */
  /** @} */

  /** Takes ownership of a handle of the C interface; null makes an empty Array. */
  static Array adopt(hcyArray* handle) noexcept {
    Array array;
    array.handle_.reset(handle);
    return array;
  }

  /** An array of zeros (false, NUL) of the class of T: `zeros<double>(rows, columns)`. */
  template <class T, class... More, detail::IfValue<T> = 0, detail::IfIntegers<More...> = 0>
  static Array zeros(Size rows, Size columns, More... more) {
    const std::size_t shape[] = {rows, columns, Size(more)...};
    return zerosOf<T>(shape, 2 + sizeof...(more));
  }

  /** An array of zeros (false, NUL) of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  static Array zeros(const Shape& shape) {
    return zerosOf<T>(shape.data(), shape.size());
  }

  /** A row: 1-by-n. */
  template <class T, detail::IfValue<T> = 0>
  static Array row(std::initializer_list<T> values) {
    return Array(values.begin(), {1, values.size()});
  }
  /** A row from a std::vector, std::array, std::span, Span or C++ array. */
  template <class R, detail::IfSequence<R> = 0>
  static Array row(const R& values) {
    return Array(std::data(values), {1, std::size(values)});
  }

  /** A matrix from its rows: `fromRows<double>({{2, 1}, {1, 3}})`. Throws UsageError if the rows
   *  differ in length. */
  template <class T, detail::IfValue<T> = 0>
  static Array fromRows(std::initializer_list<std::initializer_list<T>> rows) {
    return matrixOf<T>(rows);
  }
  /** The same from a std::vector<std::vector<T>> or another range of ranges of values. */
  template <class Rows, detail::IfRows<Rows> = 0>
  static Array fromRows(const Rows& rows) {
    return matrixOf<typename detail::RowsOf<Rows>::Value>(rows);
  }

  /** A cell array whose elements are unset. */
  static Array cells(const Shape& shape) {
    detail::requireSizes(shape.data(), shape.size(), false);
    return adopt(hcyCreateCellArray(shape.size(), shape.data()));
  }
  /** A cell array whose elements are unset. */
  static Array cells(Size rows, Size columns) { return cells(Shape{rows, columns}); }
  /** A column of cells with these elements. */
  static Array cellOf(std::initializer_list<Input> elements);
  /** A column of cells with the elements of a range, such as a std::vector<Array>. */
  template <class R, detail::IfRange<R> = 0>
  static Array cellOf(const R& elements);

  /** A struct array with these fields, which are unset. */
  static Array structs(const Shape& shape, const std::vector<std::string>& fields);
  /** A 1-by-1 struct array: `structOf({{"name", "Ada"}, {"born", 1815.0}})`. Throws UsageError if
   *  two fields have the same name. */
  static Array structOf(std::initializer_list<Field> fields);
  /** The same from a range of (name, value) pairs, such as a std::map. */
  template <class R, detail::IfRange<R> = 0>
  static Array structOf(const R& fields);

  /** A sparse array with room for nzmax stored elements; fill it through span(), rowIndices() and
   *  columnStarts(). T is double, std::complex<double> or bool. */
  template <class T>
  static Array sparse(Size rows, Size columns, Size nzmax);
  /** A sparse array with these entries, in any order. Throws UsageError if an entry is outside the
   *  array or two entries have the same row and column. */
  template <class T>
  static Array sparse(Size rows, Size columns, std::vector<Entry<T>> entries);

  /** A deep copy. */
  Array copy() const { return adopt(hcyDuplicateArray(handle())); }

  /** Changes the shape of the array; elements keep their linear index, and new ones are zero or
   *  unset. A complex array that is resized to no elements loses its imaginary parts: isComplex()
   *  stays true, but imaginary() is empty from then on. Throws UsageError if there are no
   *  dimensions or a size is over 2147483647 (here also the number of elements of a sparse array),
   *  and IncompleteReply if elements did not arrive, or the last one of a cell or struct array is
   *  of a class that the library does not support. The array is unchanged then. */
  void resize(const Shape& shape);
  /** The same with the dimensions as arguments: `resize(rows, columns)`. */
  template <class... More, detail::IfIntegers<More...> = 0>
  void resize(Size rows, Size columns, More... more) {
    resize(Shape{rows, columns, Size(more)...});
  }
  /** An array of the same shape and the class of T, with the same values. Throws UsageError if T
   *  cannot represent an element exactly, an element has an imaginary part and T has none, the
   *  array is sparse and not of the class of T already, or it does not hold numbers. */
  template <class T>
  Array convertTo() const;

  /** scalar<T>(), or the fallback if the array has no elements (like an unset cell or field). */
  template <class T, detail::IfValue<T> = 0>
  T value_or(T fallback) const;
  /** toString(), or the fallback if the array has no elements. */
  std::string value_or(std::string_view fallback) const;
  /** toVector<T>(), or the fallback if the array has no elements. */
  template <class T>
  std::vector<T> value_or(std::vector<T> fallback) const;
  /** A deep copy of the array, or the fallback if the array has no elements. */
  template <class A, detail::IfArray<A> = 0>
  Array value_or(A fallback) const& {
    return isEmpty() ? std::move(fallback) : copy();
  }
  /** The array itself, or the fallback if the array has no elements. */
  template <class A, detail::IfArray<A> = 0>
  Array value_or(A fallback) && {
    return std::move(isEmpty() ? fallback : *this);
  }
  /** The same for a field of a 1-by-1 struct: `options.value_or("tolerance", 1e-6)`. Also returns
   * the fallback if the array has no such field. Throws UsageError if the array is not a struct
   * array. */
  template <class T, detail::IfValue<T> = 0>
  T value_or(const CString& field, T fallback) const;
  /** The same for a string. */
  std::string value_or(const CString& field, std::string_view fallback) const;
  /** The same for all elements. */
  template <class T>
  std::vector<T> value_or(const CString& field, std::vector<T> fallback) const;
  /** A new handle to the field, or the fallback: `options.value_or("limits", Array({0.0, 1.0}))`.
   */
  template <class A, detail::IfArray<A> = 0>
  Array value_or(const CString& field, A fallback) const;

  /** @name Deleted operators, and what to write instead
   *  @{ */
  template <class Name, detail::IfName<Name> = 0>
  void operator[](const Name&) const = delete; /**< A field is s("name"). */
  template <class T, detail::IfIntegers<T> = 0>
  void operator()(T) const = delete; /**< A cell is cell[i], and an element array.at<double>(i). */
  template <class T, detail::IfIntegers<T> = 0>
  void operator()(T) = delete; /**< A cell is cell[i], and an element array.at<double>(i). */
  template <class T, class U, detail::IfIntegers<T, U> = 0>
  void operator()(T, U) const = delete; /**< An element is array.at<double>(i, j). */
  /** @} */

  /** Element i of a cell array, which can be read, assigned to or indexed (`cell[1]("name")`). */
  Slot operator[](Size i) &;
  /** Element i of a cell array, as a new handle. Throws UsageError if the array has no such element
   * or is not a cell array, and IncompleteReply if the element did not arrive, is incomplete, or is
   * of a class that the library does not support. */
  Array operator[](Size i) const&;
  /** The same. */
  Array operator[](Size i) && { return static_cast<const Array&>(*this)[i]; }

  /** A field of a 1-by-1 struct array, or of the first element of a larger one. */
  Slot operator()(const CString& field) &;
  /** A field of element i of a struct array. */
  Slot operator()(Size i, const CString& field) &;
  /** A field, as a new handle. Throws UsageError if the array has no such field or is not a struct
   * array, and IncompleteReply like operator[]. */
  Array operator()(const CString& field) const& { return (*this)(0, field); }
  /** The same for element i. */
  Array operator()(Size i, const CString& field) const&;
  /** The same. */
  Array operator()(const CString& field) && { return static_cast<const Array&>(*this)(0, field); }
  /** The same. */
  Array operator()(Size i, const CString& field) && {
    return static_cast<const Array&>(*this)(i, field);
  }

  /** The elements of a cell array, in order: `for (Array element : cell)`. Each is a new handle.
   *  Throws UsageError if the array is not a cell array; reading an element throws like operator[].
   */
  CellIterator begin() const;
  /** After the last element. */
  CellIterator end() const;

  /** Names and values of a 1-by-1 struct array: `for (auto [name, value] : s.fields())`. Do not
   *  change the array during the loop. Throws UsageError if it is not a struct array. */
  Fields fields() const&;
  /** The same for element i. */
  Fields fields(Size i) const&;
  /** The same for a temporary array, which is kept during the loop. */
  Fields fields() &&;

  /** Adds a field after the others, unset in every element. Does nothing if the array already has
   * the field. Throws UsageError if the array is not a struct array, IncompleteReply like resize(),
   *  std::bad_alloc if the field cannot be added. */
  void addField(const CString& field) {
    if (!isStruct()) throw wrongClass("a struct array");
    requireElements();
    if (hcyAddField(handle(), field.c_str()) < 0) throw std::bad_alloc();
  }
  /** Removes a field from every element. Throws UsageError if the array has no such field,
   * IncompleteReply like resize(). */
  void removeField(const CString& field) {
    if (!hasField(field)) throw detail::noField(handle(), field.c_str());
    requireElements();
    hcyRemoveField(handle(), hcyGetFieldNumber(handle(), field.c_str()));
  }

  /** Whether class, shape, field names and all elements are equal. NaN differs from itself; missing
   *  imaginary parts count as 0. A sparse array is equal only to a sparse one. Two empty Arrays are
   *  equal. Throws IncompleteReply if elements did not arrive. */
  friend bool operator==(const Array& a, const Array& b) { return a.equals(b); }
  /** Whether the arrays are not equal. */
  friend bool operator!=(const Array& a, const Array& b) { return !a.equals(b); }
  /** Writes format() of the array, with the default PrintLimits. */
  friend std::ostream& operator<<(std::ostream& out, const Array& array) {
    return array.print(out);
  }

 private:
  friend class Input;
  friend class Slot;

  template <class T>
  static Array zerosOf(const std::size_t* shape, std::size_t count);
  template <class Iterator>
  static Array filled(Iterator first, std::size_t count, const Shape& shape);
  template <class T, class Rows>
  static Array matrixOf(const Rows& rows);

  std::ostream& print(std::ostream& out) const;
  bool equals(const Array& other) const;
  bool equalElements(const Array& other) const;
  template <class T>
  bool equalValues(const Array& other) const;

  void addValue(const char* name, hcyArray* value);
  // Like requireWhole(), for changes that move the elements of a container: it is enough to check
  // the last one, because elements that did not arrive are always the last ones.
  void requireElements() const;

  template <class Iterator>
  void assign(Iterator value, std::size_t count);
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ARRAY_HPP
