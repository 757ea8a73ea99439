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
#include <cstdint>
#include <hcy/cpp/cell_iterator.hpp>
#include <hcy/cpp/element.hpp>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/sequence.hpp>
#include <hcy/cpp/shape.hpp>
#include <hcy/cpp/span.hpp>
#include <hcy/cpp/text.hpp>
#include <hcy/cpp/whole.hpp>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
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

template <class T>
struct Entry;
class Fields;
class Input;
class Outputs;
class Slot;
struct Field;

/**
 * An array.
 *
 * C++ types and classes belong together: double is "double", float "single", bool "logical",
 * char16_t "char", and an integer type is the integer class of its width and sign (so `2` makes an
 * int32, and `2.0` a double). std::complex of one of them is the same class with imaginary parts.
 * Texts are UTF-8 in C++ and UTF-16 in arrays.
 *
 * An Array that was made by the default constructor, has been moved from or released is empty: it
 * can be assigned to, destroyed and tested, and all else throws UsageError.
 *
 * A size over 2147483647 (a dimension, the number of elements, that of fields times elements, that
 * of stored elements or of columns plus one in a sparse array) throws UsageError wherever an array
 * is made; the number of elements of a sparse array may be larger.
 *
 * Reading the elements of an incomplete array of a reply throws IncompleteReply, and so does
 * changing its shape or fields. What it says of itself (class, dimensions, names of fields) can be
 * read.
 */
class Array {
 public:
  /** Makes an empty Array, which holds no array. */
  Array() noexcept = default;
  Array(const Array&) = delete;            /**< Write a.copy(). */
  Array& operator=(const Array&) = delete; /**< Write a.copy(). */
  /** Takes over what the other one holds. */
  Array(Array&&) noexcept = default;
  /** Takes over what the other one holds. */
  Array& operator=(Array&&) noexcept = default;
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

  /** A column of the class of the elements: from a std::vector, std::array, std::span, Span or
   * array of C++. */
  template <class R, detail::IfSequence<R> = 0>
  Array(const R& values) : Array(std::data(values), {std::size(values), 1}) {}
  /** A column of values that are written down. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values) : Array(values.begin(), {values.size(), 1}) {}
  /** A logical column. */
  Array(const std::vector<bool>& values) : Array(values.begin(), values.end()) {}
  /** A column of what the iterators lead through. */
  template <class Iterator, detail::IfIterator<Iterator> = 0>
  Array(Iterator first, Iterator last);

  /** An array of this shape, filled in column-major order; throws UsageError unless there is a
   *  value for each element. */
  template <class R, detail::IfSequence<R> = 0>
  Array(const R& values, const Shape& shape)
      : Array(filled(std::data(values), std::size(values), shape)) {}
  /** The same from values that are written down. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values, const Shape& shape)
      : Array(filled(values.begin(), values.size(), shape)) {}
  /** The same from a vector of bool. */
  Array(const std::vector<bool>& values, const Shape& shape)
      : Array(filled(values.begin(), values.size(), shape)) {}
  /** The same from as many values behind `data` as the shape has elements; null is for none. */
  template <class T, detail::IfValue<T> = 0>
  Array(const T* data, const Shape& shape) : Array(zeros<T>(shape)) {
    if (data == nullptr && size() != 0)
      throw UsageError("there are no values: the pointer is null");
    assign(data, size());
  }

  /** A 1-by-n char array from UTF-8; 0-by-0 from the empty text. Throws UsageError when it is not
   *  well-formed (RFC 3629). */
  Array(std::string_view text) {
    const std::size_t length = detail::utf16Length(text);
    *this = zeros<char16_t>(length == 0 ? 0 : 1, length);
    if (length != 0) detail::writeUtf16(text, dataOf<char16_t>(), length);
  }
  /** A 1-by-n char array from UTF-8. */
  Array(const std::string& text) : Array(std::string_view(text)) {}
  /** A 1-by-n char array from UTF-8 that a NUL ends. */
  Array(const char* text) : Array(std::string_view(text)) {}
  Array(std::nullptr_t) = delete; /**< Null makes no text. */
  Array(char) = delete;           /**< Text stands in double quotes: "c". */
  Array(const Outputs&) = delete; /**< Write context.call(...), or context.feval(...)[0]. */
  /** A 1-by-n char array of these code units; 0-by-0 from none. */
  Array(std::u16string_view units) {
    *this = zeros<char16_t>(units.empty() ? 0 : 1, units.size());
    std::copy(units.begin(), units.end(), dataOf<char16_t>());
  }
#ifdef __cpp_char8_t
  /** A 1-by-n char array from UTF-8. */
  Array(std::u8string_view text)
      : Array(std::string_view(reinterpret_cast<const char*>(text.data()), text.size())) {}
  /** A 1-by-n char array from UTF-8. */
  Array(const char8_t* text) : Array(std::u8string_view(text)) {}
#endif
  /** A column of cells, each a text. */
  Array(const std::vector<std::string>& texts);

  /** Takes over a handle of the C interface, to destroy it; null makes an empty Array. */
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
  /** A row from a std::vector, std::array, std::span, Span or array of C++. */
  template <class R, detail::IfSequence<R> = 0>
  static Array row(const R& values) {
    return Array(std::data(values), {1, std::size(values)});
  }

  /** A matrix by its rows: `fromRows<double>({{2, 1}, {1, 3}})`. Throws UsageError for rows that
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

  /** A cell array whose elements were never set. */
  static Array cells(const Shape& shape) {
    detail::requireSizes(shape.data(), shape.size(), false);
    return adopt(hcyCreateCellArray(shape.size(), shape.data()));
  }
  /** A cell array whose elements were never set. */
  static Array cells(Size rows, Size columns) { return cells(Shape{rows, columns}); }
  /** A column of cells with these elements. */
  static Array cellOf(std::initializer_list<Input> elements);
  /** A column of cells with the elements of a range, such as a std::vector<Array>. */
  template <class R, detail::IfRange<R> = 0>
  static Array cellOf(const R& elements);

  /** A struct array with these fields, never set. */
  static Array structs(const Shape& shape, const std::vector<std::string>& fields);
  /** A 1-by-1 struct array: `structOf({{"name", "Ada"}, {"born", 1815.0}})`. Throws UsageError when
   *  a field is named twice. */
  static Array structOf(std::initializer_list<Field> fields);
  /** The same from a range of pairs of a name and a value, such as a std::map. */
  template <class R, detail::IfRange<R> = 0>
  static Array structOf(const R& fields);

  /** A sparse array with room for nzmax stored elements, to be filled through span(),
   *  rowIndices() and columnStarts(). T is double, std::complex<double> or bool. */
  template <class T>
  static Array sparse(Size rows, Size columns, Size nzmax) {
    const std::size_t shape[] = {rows, columns};
    detail::requireSizes(shape, 2, true);
    if (nzmax > detail::largestSize) {
      throw UsageError("there are too many stored elements: " + std::to_string(nzmax));
    }
    if constexpr (std::is_same_v<T, bool>) {
      return adopt(hcyCreateSparseLogicalMatrix(rows, columns, nzmax));
    } else {
      static_assert(std::is_same_v<detail::Part<T>, double>, "sparse arrays are double or logical");
      return adopt(hcyCreateSparse(rows, columns, nzmax, complexityOf<T>()));
    }
  }
  /** A sparse array with these entries, in any order. Throws UsageError for an entry outside the
   *  array and for two in one place. */
  template <class T>
  static Array sparse(Size rows, Size columns, std::vector<Entry<T>> entries);

  /** A deep copy. */
  Array copy() const { return adopt(hcyDuplicateArray(handle())); }

  /** Whether it holds an array at all. */
  explicit operator bool() const noexcept { return handle_ != nullptr; }
  /** The handle, which stays owned here; null if the Array is empty. */
  hcyArray* get() const noexcept { return handle_.get(); }
  /** Gives the handle away: the caller destroys it, and the Array is empty. */
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
  std::size_t columns() const { return hcyGetN(handle()); } /**< The second one alone. */
  /** The product of the dimensions. */
  std::size_t size() const { return hcyGetNumberOfElements(handle()); }
  /** The dimensions; none where those of a reply did not arrive. */
  Shape shape() const {
    const std::size_t* const first = hcyGetDimensions(handle());
    return Shape(first, first + hcyGetNumberOfDimensions(handle()));
  }
  /** Gives the array another shape; elements keep their linear index, new ones are zero or never
   *  set. A complex array that is resized to no elements has lost its imaginary parts: isComplex()
   *  stays true, and imaginary() is empty from then on. Throws UsageError when there is no
   *  dimension or a size is over 2147483647 (here the number of elements of a sparse array, too),
   *  and IncompleteReply when elements did not arrive, or the last one of a cell or struct array is
   *  of a class that the library does not serve. The array is as before then. */
  void resize(const Shape& shape);
  /** The dimensions in the array's own storage; valid until the shape changes or the array is
   *  destroyed. */
  Span<const std::size_t> dimensions() const& {
    return {hcyGetDimensions(handle()), hcyGetNumberOfDimensions(get())};
  }
  Span<const std::size_t> dimensions() const&& = delete; /**< Keep the array: `Array x = ...;`. */
  /** The linear index of an element with zero-based subscripts: `index(i, j)`, `index({i, j})`.
   *  Throws UsageError unless there is one for each dimension, and below it. */
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

  /** An element by its zero-based subscripts, or by its linear index alone: `at<double>(i, j)`,
   *  `at<std::complex<double>>(i)`. Of a sparse array, 0 where nothing is stored. The element is
   *  converted if it keeps its value. Throws UsageError when there is no such element, it has
   *  another value as a T, or the array holds no numbers (no code units, with T char16_t);
   *  IncompleteReply when elements did not arrive. In a loop, span() is faster. */
  template <class T, class... More, detail::IfIntegers<More...> = 0>
  T at(Size i, More... more) const;

  /** The elements (of a complex array, the real parts) in the array's own storage. Of a sparse
   *  array, the values that there is room for: nzmax, but no more than size(). Throws UsageError
   *  unless the array is of the class of T, IncompleteReply when elements did not arrive. */
  template <class T>
  Span<T> span() & {
    return elements<T>(roomToWrite());
  }
  /** The read-only overload; of a sparse array, the stored values, which the last column start
   *  counts. Otherwise the same. */
  template <class T>
  Span<const T> span() const& {
    return elements<T>(countToRead());
  }
  template <class T>
  Span<const T> span() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The imaginary parts in the array's own storage; empty for a real array, and for a complex one
   *  that resize() took them from. Otherwise as span(). */
  template <class T>
  Span<T> imaginary() & {
    return imaginaryElements<T>(roomToWrite());
  }
  /** The read-only overload, as span() const. */
  template <class T>
  Span<const T> imaginary() const& {
    return imaginaryElements<T>(countToRead());
  }
  template <class T>
  Span<const T> imaginary() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** A copy of the elements in column-major order; of a sparse array, of the stored ones. Numbers
   *  and logical values of another class are converted. With T a std::complex, both parts;
   * otherwise the real ones. With T a std::string, the texts of the elements of a cell array.
   * Throws UsageError when an element has another value as a T or the array is of another kind,
   *  IncompleteReply when elements did not arrive; as toString() for texts. */
  template <class T>
  std::vector<T> toVector() const;

  /** An array of the same shape and the class of T, with the same values. Throws UsageError when an
   *  element has another value as a T, or an imaginary part and T has none; when the array is
   * sparse and not of the class of T already; and when it holds no numbers. */
  template <class T>
  Array convertTo() const;

  /** The one element of a 1-by-1 array as a T, if it keeps its value there: `scalar<int>()` of the
   *  double 3. Throws UsageError otherwise, and as at(). */
  template <class T>
  T scalar() const;
  /** scalar<T>(), or the fallback when the array has no elements, as a cell or field has none that
   *  was never set. */
  template <class T, detail::IfValue<T> = 0>
  T value_or(T fallback) const;
  /** toString(), or the fallback when the array has no elements. */
  std::string value_or(std::string_view fallback) const;
  /** The same for a field of a 1-by-1 struct: `options.value_or("tolerance", 1e-6)`. The fallback
   *  counts also when there is no such field. Throws UsageError when the array is not a struct. */
  template <class T, detail::IfValue<T> = 0>
  T value_or(const CString& field, T fallback) const;
  /** The same for a text. */
  std::string value_or(const CString& field, std::string_view fallback) const;

  /** The text of a char array, read in column-major order, as UTF-8; empty when there are no
   *  elements. Throws UsageError when the array is of another class, or ends in a surrogate
   *  without a unit behind it, IncompleteReply when code units did not arrive. Other stray
   *  surrogates give bytes that are not UTF-8, as with hcyArrayToString(); unlike there, a NUL is a
   * character like any other. */
  std::string toString() const {
    const Span<const char16_t> units = span<char16_t>();
    return detail::utf8Of(units.data(), units.size());
  }

  /** The first element as a double (of a complex array, its real part; of a sparse one, the first
   *  that is stored). Throws UsageError when there is none, and for cells and structs,
   *  IncompleteReply when any element did not arrive. 64-bit integers beyond 2^53 are rounded. */
  double scalar() const {
    requireWhole();
    const double value = hcyGetScalar(handle());
    // A positive one is right whatever the class: 0 may stand for none, and uint8 is read as
    // signed.
    if (value > 0) return value;
    if (size() == 0 || isCell() || isStruct()) throw UsageError("there is no number to read");
    return is<std::uint8_t>() ? span<std::uint8_t>()[0] : value;
  }

  /** The zero-based rows of the elements of a sparse array, as many as span() gives. Throws
   *  UsageError if it is full, IncompleteReply when column starts and rows do not describe a sparse
   *  array of its dimensions, or values did not arrive. */
  Span<std::size_t> rowIndices() & { return rowsOf(roomToWrite()); }
  /** The read-only overload; as many elements as span() const returns. */
  Span<const std::size_t> rowIndices() const& { return rowsOf(countToRead()); }
  Span<const std::size_t> rowIndices() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The column starts of a sparse array, columns() + 1 of them. Throws as rowIndices(). */
  Span<std::size_t> columnStarts() & { return starts(); }
  /** The read-only overload. */
  Span<const std::size_t> columnStarts() const& { return starts(); }
  Span<const std::size_t> columnStarts() const&& = delete; /**< Keep the array: `Array x = ...;`. */

  /** The stored elements of a sparse array, column after column. Throws UsageError when the program
   *  has set column starts or rows that lead outside it, and as span() and rowIndices(). */
  template <class T>
  std::vector<Entry<T>> entries() const;

  /** @name What is written in another way
   *  @{ */
  template <class Name, detail::IfName<Name> = 0>
  void operator[](const Name&) const = delete; /**< A field is s("name"). */
  template <class T, detail::IfIntegers<T> = 0>
  void operator()(T) const = delete; /**< A cell is cell[i], and an element array.at<double>(i). */
  template <class T, class U, detail::IfIntegers<T, U> = 0>
  void operator()(T, U) const = delete; /**< An element is array.at<double>(i, j). */
  /** @} */

  /** Element i of a cell array: to read, to assign to, or to go on into (`cell[1]("name")`). */
  Slot operator[](Size i) &;
  /** Element i of a cell array, as a handle of its own. Throws UsageError when there is none,
   *  IncompleteReply when it did not arrive or not as a whole, or is of a class that the library
   *  does not serve. */
  Array operator[](Size i) const&;
  /** The same. */
  Array operator[](Size i) && { return static_cast<const Array&>(*this)[i]; }

  /** A field of a 1-by-1 struct array, or of the first element of a larger one. */
  Slot operator()(const CString& field) &;
  /** A field of element i of a struct array. */
  Slot operator()(Size i, const CString& field) &;
  /** A field, as a handle of its own. Throws as operator[]. */
  Array operator()(const CString& field) const& { return (*this)(0, field); }
  /** The same of element i. */
  Array operator()(Size i, const CString& field) const&;
  /** The same. */
  Array operator()(const CString& field) && { return static_cast<const Array&>(*this)(0, field); }
  /** The same. */
  Array operator()(Size i, const CString& field) && {
    return static_cast<const Array&>(*this)(i, field);
  }

  /** The elements of a cell array, in order: `for (Array element : cell)`. Each is a handle of its
   *  own. Throws UsageError if the array is not a cell array; reading an element throws as
   *  operator[]. */
  CellIterator begin() const;
  /** Behind the last element. */
  CellIterator end() const;

  /** Names and values of a 1-by-1 struct array: `for (auto [name, value] : s.fields())`. The array
   *  has to stay as it is meanwhile. Throws UsageError if it is not a struct array. */
  Fields fields() const&;
  /** The same of element i. */
  Fields fields(Size i) const&;
  /** The same of an array that is gone otherwise: it is kept. */
  Fields fields() &&;

  /** The names of the fields; none for an array that is no struct. */
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
  /** Adds a field behind the others, never set; nothing happens when it exists. Throws UsageError
   *  when the array is not a struct, IncompleteReply as resize(), std::bad_alloc when there is no
   *  room. */
  void addField(const CString& field) {
    if (!isStruct()) throw wrongClass("struct");
    requireElements();
    if (hcyAddField(handle(), field.c_str()) < 0) throw std::bad_alloc();
  }
  /** Removes a field from every element. Throws UsageError when there is none, IncompleteReply as
   *  resize(). */
  void removeField(const CString& field) {
    if (!hasField(field)) throw UsageError("there is no field " + std::string(field.c_str()));
    requireElements();
    hcyRemoveField(handle(), hcyGetFieldNumber(handle(), field.c_str()));
  }

  /** Whether class, shape, names of fields and all elements are the same. NaN differs from itself;
   *  imaginary parts that are not there count as 0. A sparse array equals only a sparse one. Two
   *  empty Arrays are equal. Throws IncompleteReply when elements did not arrive. */
  friend bool operator==(const Array& a, const Array& b) { return a.equals(b); }
  /** Whether something differs. */
  friend bool operator!=(const Array& a, const Array& b) { return !a.equals(b); }
  /** Writes format() of the array, as much as PrintLimits allows unless they are set. */
  friend std::ostream& operator<<(std::ostream& out, const Array& array) {
    return array.print(out);
  }

 private:
  friend class Input;
  friend class Slot;
  friend class detail::Printer;

  template <class T>
  static constexpr hcyClassID classOf() {
    return detail::Element<detail::Part<T>>::classId;
  }
  template <class T>
  static constexpr hcyComplexity complexityOf() {
    return detail::Parts<T>::areTwo ? hcyCOMPLEX : hcyREAL;
  }

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

  std::size_t linearIndex(const std::size_t* subscripts, std::size_t count) const;
  std::size_t storedIndex(std::size_t i) const;
  template <class Use>
  auto withElementType(const Use& use) const;
  template <class T, bool onlyReal, class Take>
  void convertEach(const Take& take) const;
  void addValue(const char* name, hcyArray* value);
  template <class T>
  bool readExactly(std::size_t i, T& value) const;

  hcyArray* handle() const {
    if (!handle_) throw UsageError("the Array is empty");
    return handle_.get();
  }

  UsageError wrongClass(std::string_view wanted) const {
    return UsageError("the array is " + std::string(className()) + ", not " + std::string(wanted));
  }

  void requireWhole() const {
    if (detail::isWhole(handle())) return;
    throw IncompleteReply("the array is incomplete: " + detail::lackOf(get()) +
                          detail::limitMayHaveCut);
  }

  // The same where elements of a container move: those that did not arrive are the last ones.
  void requireElements() const;

  // How many elements there are to read: of a sparse array, the stored ones. Column starts that the
  // program has set may say more than there is room for.
  std::size_t countToRead() const {
    if (!isSparse()) return size();
    requireWhole();
    return std::min(hcyGetJc(get())[columns()], hcyGetNzmax(get()));
  }

  // The same with all that there is room for. In a reply, the list of values may be shorter than
  // that of row indices behind the stored elements: they get one length.
  std::size_t roomToWrite() {
    const std::size_t stored = countToRead();
    if (!isSparse()) return stored;
    const std::size_t room = std::min(hcyGetNzmax(get()), size());
    if (room <= stored) return stored;
    hcySetNzmax(get(), room);
    return room;
  }

  void requireSparse() const {
    if (!isSparse()) throw UsageError("the array is not sparse");
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
    static_assert(detail::Element<T>::exists, "no array has elements of this type");
    static_assert(std::is_same_v<T, typename detail::Element<T>::Stored>,
                  "the elements are stored as the type of <cstdint> of this width");
    if (!is<T>()) throw wrongClass(nameOf(classOf<T>()));
  }

  static std::string_view nameOf(hcyClassID classId) {
    constexpr std::string_view names[] = {"uint8",  "int8",  "uint16", "int16",  "uint32",  "int32",
                                          "uint64", "int64", "single", "double", "logical", "char"};
    return names[static_cast<std::size_t>(classId)];
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

  template <class Iterator>
  void assign(Iterator value, std::size_t count) {
    using T = typename std::iterator_traits<Iterator>::value_type;
    using Stored = typename detail::Element<detail::Part<T>>::Stored;
    if (count == 0) return;
    Stored* const real = dataOf<Stored>();
    if constexpr (detail::Parts<T>::areTwo) {
      auto* const imaginary = static_cast<Stored*>(hcyGetImagData(handle()));
      for (std::size_t i = 0; i < count; ++i, ++value) {
        real[i] = value->real();
        imaginary[i] = value->imag();
      }
    } else {
      std::copy_n(value, count, real);
    }
  }

  std::unique_ptr<hcyArray, detail::Destroyer> handle_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_ARRAY_HPP
