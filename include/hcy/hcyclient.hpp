/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file hcyclient.hpp
 * @brief The C++ API over hcyclient.h: the same library with owners, exceptions and typed spans.
 *
 * @code
 * const hcyclient::Library library;
 * const hcyclient::Config config(library);
 * hcyclient::Context context(config);
 * const auto sums = context.feval("http://127.0.0.1:8080/math/plus", {2.0, 3.0});
 * std::cout << sums[0].scalar() << '\n';
 * @endcode
 *
 * Header-only C++17 over the C functions alone: a program compiled with it depends on nothing but
 * the C interface of the shared library, whatever compiler made that. An Array is as large as a
 * pointer.
 *
 * @par Rules for the whole header
 * - **Owners.** Library, Config, Context and Array own what they stand for and can be moved, not
 *   copied; Array::copy() copies. A Library outlives all configurations and contexts. One that has
 *   been moved from can be assigned to and destroyed; using it throws UsageError.
 * - **Failures.** Everything that is thrown is an Error or a class derived from it, except
 *   std::bad_alloc when memory is exhausted. Whatever is thrown, nothing leaks, and arguments are
 *   unchanged.
 * - **Incomplete replies.** A reply may hold fewer elements than the dimensions of its arrays say,
 *   because the response size limit cut it or the server broke its own rules. Nothing stands in for
 *   what did not arrive: IncompleteReply is thrown instead.
 * - **Threads.** Const members of one array may be called by several threads at once while none
 *   changes it. One configuration and one context are used by one thread at a time; a second call
 *   on a context that is in use throws UsageError.
 * - **Lists.** A list of values without a shape becomes a column: n-by-1. Values are copied in
 *   column-major order.
 */
#ifndef HCY_HCYCLIENT_HPP
#define HCY_HCYCLIENT_HPP

#if __cplusplus < 201703L
#error "hcyclient.hpp needs C++17; hcyclient.h is for C99 and C++11"
#endif

#include <hcy/hcyclient.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/** The C++ API of the library. */
namespace hcyclient {

/**
 * @defgroup cpp_errors C++: errors
 * @brief What the C++ API throws.
 * @{
 */

/** The base of all exceptions that this header throws. */
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** The library, a configuration or a context could not be started. */
class InitializationError : public Error {
 public:
  using Error::Error;
};

/** An array was asked for what it is not or does not hold (another class, an index or field that
 *  is not there), a value cannot be handed to the library (text that is not UTF-8, a NUL inside a
 *  URL or name, a size over 2147483647, a URL that is not http or https), or an object was used
 *  that has been moved from or is in use by another thread. */
class UsageError : public Error {
 public:
  using Error::Error;
};

/** An array of a reply is incomplete: fewer elements arrived than its dimensions say, its
 *  dimensions did not arrive, or its column starts and row indices do not describe a sparse array
 *  of its dimensions. what() says which array, and how many elements its dimensions name. The usual
 *  reason is that the response size limit cut the reply: see Config::setResponseSizeLimit().
 *
 *  Context::feval() throws it for an incomplete output. An array that was adopted, and an element
 *  of a cell or struct array, are checked when they are read. */
class IncompleteReply : public Error {
 public:
  using Error::Error;
};

/** A call failed: the base of the three kinds of failure. The context can be used for more. */
class CallError : public Error {
 public:
  using Error::Error;
};

/** The server answered with an HTTP status other than 200. */
class HttpError : public CallError {
 public:
  /** Takes over status and reason. */
  HttpError(std::uint32_t status, const std::string& reason)
      : CallError("HTTP status " + std::to_string(status) + (reason.empty() ? "" : " ") + reason),
        status_(status),
        reason_(std::make_shared<const std::string>(reason)) {}

  /** The HTTP status. */
  std::uint32_t status() const noexcept { return status_; }
  /** The reason phrase behind the status, without its line end; may be empty. */
  const std::string& reason() const noexcept { return *reason_; }

 private:
  std::uint32_t status_;
  std::shared_ptr<const std::string> reason_;
};

/** One frame of the stack of an error that a function raised. */
struct StackFrame {
  std::string file;      /**< file of the function */
  std::string name;      /**< name of the function */
  std::int32_t line = 0; /**< line in the file; 0 when it is not known */
};

/** The function ran on the server and raised an error; what() is its message. */
class FunctionError : public CallError {
 public:
  /** Takes over the account of the error. */
  FunctionError(const std::string& message, std::string identifier, std::vector<StackFrame> stack)
      : CallError(message),
        details_(
            std::make_shared<const Details>(Details{std::move(identifier), std::move(stack)})) {}

  /** The identifier of the error, such as `halcyon:argument:size`. */
  const std::string& identifier() const noexcept { return details_->identifier; }
  /** The stack in the server's order, the innermost function first. */
  const std::vector<StackFrame>& stack() const noexcept { return details_->stack; }

 private:
  // Shared, so that copying the exception cannot fail.
  struct Details {
    std::string identifier;
    std::vector<StackFrame> stack;
  };
  std::shared_ptr<const Details> details_;
};

/** The call failed otherwise; what() says how: transport, time-out, size limit, memory, or a
 *  number of outputs that differs. */
class TransportError : public CallError {
 public:
  using CallError::CallError;
};

/** @} */

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

/** What the rest of the header is made of; not for callers. */
namespace detail {

template <class T>
struct IsCharacter : std::bool_constant<std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
                                        std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>
#ifdef __cpp_char8_t
                                        || std::is_same_v<T, char8_t>
#endif
                                        > {
};

// The class of arrays whose elements are of type T, and the type that they are stored as.
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

template <class T>
constexpr bool isNumeric =
    Element<T>::exists && !std::is_same_v<T, bool> && !std::is_same_v<T, char16_t>;
// What an array can be made from, value by value.
template <class T>
constexpr bool isValue = Parts<T>::areTwo ? isNumeric<Part<T>> : Element<T>::exists;
template <class T>
using IfValue = std::enable_if_t<isValue<T>, int>;

constexpr std::uint64_t largestSize = 2147483647;

// "2-by-3"; the first eight dimensions are enough to know an array by.
inline std::string shapeText(const std::size_t* dimensions, std::size_t count) {
  if (count == 1) return std::to_string(dimensions[0]) + "-by-1";
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, 8); ++i) {
    text += (i == 0 ? "" : "-by-") + std::to_string(dimensions[i]);
  }
  return count > 8 ? text + "-by-..." : text;
}

// Throws for sizes that the library refuses by an exception of its own. A sparse array may have any
// number of elements; an element of a struct array takes a place for each of its fields.
inline void requireSizes(const std::size_t* dimensions, std::size_t count, bool isSparse,
                         std::uint64_t placesPerElement = 1) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  bool fits = count <= largestSize;
  std::uint64_t places = placesPerElement;
  for (std::size_t i = 0; fits && i < count; ++i) {
    fits = dimensions[i] <= largestSize;
    places = dimensions[i] != 0 && places > most / dimensions[i] ? most : places * dimensions[i];
  }
  // A column takes a start, and the last one an end.
  if (isSparse && count > 1 && fits) fits = dimensions[1] < largestSize;
  if (fits && (isSparse || places <= largestSize)) return;
  const std::string fields =
      placesPerElement == 1 ? "" : " with " + std::to_string(placesPerElement) + " fields";
  throw UsageError("the size is larger than an array can be: " + shapeText(dimensions, count) +
                   fields);
}

// A text as the C functions take it, which would be cut short by a NUL inside.
inline const char* cText(const std::string& text) {
  if (text.find('\0') != std::string::npos) throw UsageError("a text has a NUL inside");
  return text.c_str();
}

// Whether all bytes are ASCII, eight at a time.
inline bool isAscii(std::string_view text) {
  std::uint64_t seen = 0;
  std::uint64_t eight = 0;
  std::size_t i = 0;
  for (; text.size() - i >= sizeof eight; i += sizeof eight) {
    std::memcpy(&eight, text.data() + i, sizeof eight);
    seen |= eight;
  }
  for (; i < text.size(); ++i) seen |= static_cast<unsigned char>(text[i]);
  return (seen & 0x8080808080808080U) == 0;
}

// The same for code units, four at a time.
inline bool isAscii(const char16_t* units, std::size_t count) {
  std::uint64_t seen = 0;
  std::uint64_t four = 0;
  std::size_t i = 0;
  for (; count - i >= 4; i += 4) {
    std::memcpy(&four, units + i, sizeof four);
    seen |= four;
  }
  for (; i < count; ++i) seen |= units[i];
  return (seen & 0xFF80FF80FF80FF80U) == 0;
}

// Takes the code point at `position` and steps behind it.
inline char32_t nextCodePoint(const char*& position, const char* end) {
  const auto byteAt = [](const char* at) { return static_cast<unsigned char>(*at); };
  const unsigned lead = byteAt(position++);
  if (lead < 0x80) return lead;
  const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
  char32_t codePoint = lead & (0x3FU >> following);
  bool isWellFormed = lead >= 0xC2 && lead <= 0xF4 && end - position >= following;
  for (int i = 0; isWellFormed && i < following; ++i) {
    isWellFormed = (byteAt(position) & 0xC0U) == 0x80;
    codePoint = codePoint << 6 | (byteAt(position++) & 0x3FU);
  }
  if (!isWellFormed || codePoint < smallest[following - 1] || codePoint > 0x10FFFF ||
      (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
    throw UsageError("a text is not UTF-8");
  }
  return codePoint;
}

inline std::size_t utf16Length(std::string_view text) {
  if (isAscii(text)) return text.size();
  std::size_t units = 0;
  const char* const end = text.data() + text.size();
  for (const char* position = text.data(); position != end;) {
    units += nextCodePoint(position, end) < 0x10000 ? 1U : 2U;
  }
  return units;
}

// The text has this many code units.
inline void writeUtf16(std::string_view text, char16_t* out, std::size_t length) {
  // As many as bytes: then each is one of ASCII.
  if (length == text.size()) {
    std::copy(text.begin(), text.end(), out);
    return;
  }
  const char* const end = text.data() + text.size();
  for (const char* position = text.data(); position != end;) {
    const char32_t codePoint = nextCodePoint(position, end);
    if (codePoint < 0x10000) {
      *out++ = static_cast<char16_t>(codePoint);
    } else {
      *out++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
      *out++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
    }
  }
}

inline void appendUtf8(char32_t codePoint, std::string& text) {
  const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
  if (codePoint < 0x80) return append(codePoint);
  if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
  } else {
    if (codePoint < 0x10000) {
      append(0xE0 | codePoint >> 12);
    } else {
      append(0xF0 + (codePoint >> 18));
      append(0x80 | (codePoint >> 12 & 0x3F));
    }
    append(0x80 | (codePoint >> 6 & 0x3F));
  }
  append(0x80 | (codePoint & 0x3F));
}

// As hcyArrayToString(): a surrogate is combined with whatever unit follows it.
inline std::string utf8Of(const char16_t* unit, std::size_t count) {
  std::string text;
  if (isAscii(unit, count)) {
    text.resize(count);
    std::transform(unit, unit + count, text.begin(),
                   [](char16_t ascii) { return static_cast<char>(ascii); });
    return text;
  }
  text.reserve(count);
  for (const char16_t* const end = unit + count; unit != end;) {
    char32_t codePoint = *unit++;
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
      if (unit == end) throw UsageError("the text ends inside a surrogate pair");
      codePoint = ((codePoint - 0xD800) << 10 | (char32_t{*unit++} - 0xDC00)) + 0x10000;
    }
    appendUtf8(codePoint, text);
  }
  return text;
}

// Handles side by side, as a call takes and gives them; a few need no memory.
template <class Handle>
class Handles {
 public:
  explicit Handles(std::size_t count) {
    if (count > few_.size()) many_.resize(count);
  }
  Handle* data() noexcept { return many_.empty() ? few_.data() : many_.data(); }

 private:
  std::array<Handle, 8> few_{};
  std::vector<Handle> many_;
};

struct Destroyer {
  void operator()(hcyArray* handle) const noexcept { hcyDestroyArray(handle); }
};

// Whether a complex array has its imaginary parts. One that the program resized to no elements and
// back has none and lacks none: a copy of it is real.
inline bool hasImaginaryParts(const hcyArray* array) {
  if (hcyGetImagData(array) != nullptr) return true;
  const std::unique_ptr<hcyArray, Destroyer> copy(hcyDuplicateArray(array));
  return !hcyIsComplex(copy.get());
}

inline bool isWholeSparse(const hcyArray* array) {
  const std::size_t* const starts = hcyGetJc(array);
  if (starts == nullptr) return false;
  if (starts[hcyGetN(array)] == 0) return true;
  if (hcyIsDouble(array)) {
    return hcyGetPr(array) != nullptr && (!hcyIsComplex(array) || hasImaginaryParts(array));
  }
  // Values that are neither double nor logical cannot be reached, whether they arrived or not.
  return !hcyIsLogical(array) || hcyGetLogicals(array) != nullptr;
}

// Whether the storage of an array holds what its dimensions say. The time does not grow with the
// array: the elements of a cell or struct array are looked at when they are read.
inline bool isWhole(const hcyArray* array) {
  if (hcyGetNumberOfDimensions(array) == 0) return false;
  // Most arrays are real numbers, full or sparse.
  if (hcyGetData(array) != nullptr && !hcyIsComplex(array)) return true;
  if (hcyIsSparse(array)) return isWholeSparse(array);
  switch (hcyGetClassID(array)) {
    case hcyCELL_CLASS:
    case hcySTRUCT_CLASS:
      return true;
    case hcyLOGICAL_CLASS:
      return hcyGetLogicals(array) != nullptr || hcyGetNumberOfElements(array) == 0;
    case hcyCHAR_CLASS:
      return hcyGetChars(array) != nullptr || hcyGetNumberOfElements(array) == 0;
    default:
      if (hcyGetData(array) == nullptr) return hcyGetNumberOfElements(array) == 0;
      return hasImaginaryParts(array);
  }
}

// What an array lacks that is not whole.
inline std::string lackOf(const hcyArray* array) {
  if (hcyGetNumberOfDimensions(array) == 0) return "its dimensions did not arrive";
  if (hcyIsSparse(array)) {
    return "its column starts, row indices and values do not make a sparse array of " +
           shapeText(hcyGetDimensions(array), hcyGetNumberOfDimensions(array));
  }
  return "its dimensions name " + std::to_string(hcyGetNumberOfElements(array)) +
         " elements, but fewer arrived";
}

constexpr const char* limitMayHaveCut =
    "; the response size limit (Config::setResponseSizeLimit) may have cut the reply";

// The Library objects of the process. Visible, so that the dynamic linker gives all shared objects
// the same one, whatever version of this header they were compiled with: its layout never changes.
struct HCY_API Libraries {
  std::mutex mutex;
  std::size_t count = 0;
  hcyClientRuntime* runtime = nullptr;
};
inline HCY_API Libraries libraries;

// Whether somebody is at work. Whoever moves an object moves it while nobody is.
class BusyFlag {
 public:
  BusyFlag() = default;
  BusyFlag(BusyFlag&&) noexcept {}
  BusyFlag& operator=(BusyFlag&&) noexcept { return *this; }
  BusyFlag(const BusyFlag&) = delete;
  BusyFlag& operator=(const BusyFlag&) = delete;
  ~BusyFlag() = default;

  bool raise() noexcept { return !isRaised_.exchange(true, std::memory_order_acquire); }
  void lower() noexcept { isRaised_.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> isRaised_ = false;
};

// libcurl would also read files and speak other protocols, and guess where the URL names none.
inline void requireHttp(std::string_view url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    const auto isSame = [](char lower, char c) {
      return lower == (c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c);
    };
    if (url.size() >= scheme.size() &&
        std::equal(scheme.begin(), scheme.end(), url.begin(), isSame)) {
      return;
    }
  }
  throw UsageError("the URL does not begin with http:// or https://");
}

}  // namespace detail

/**
 * @defgroup cpp_arrays C++: arrays
 * @brief Arrays of the VORTEN language as C++ values.
 * @{
 */

/** Dimensions: rows, columns, and more. One dimension alone means n-by-1. */
using Shape = std::vector<std::size_t>;

/** A stored element of a sparse array, with zero-based row and column. */
template <class T>
struct Entry {
  std::size_t row;    /**< zero-based row */
  std::size_t column; /**< zero-based column */
  T value;            /**< what is stored there */
};

class Input;
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

  /** A column of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  Array(const std::vector<T>& values) : Array(zeros<T>(values.size(), 1)) {
    assign(values.begin(), values.size());
  }
  /** A column of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values) : Array(zeros<T>(values.size(), 1)) {
    assign(values.begin(), values.size());
  }

  /** An array of this shape, filled in column-major order; throws UsageError unless there is a
   *  value for each element. */
  template <class T, detail::IfValue<T> = 0>
  Array(const std::vector<T>& values, const Shape& shape) : Array(zeros<T>(shape)) {
    assign(values.begin(), values.size());
  }
  /** The same from values that are written down. */
  template <class T, detail::IfValue<T> = 0>
  Array(std::initializer_list<T> values, const Shape& shape) : Array(zeros<T>(shape)) {
    assign(values.begin(), values.size());
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
  /** A pointer that is null makes no text. */
  Array(std::nullptr_t) = delete;
  /** A 1-by-n char array of these code units; 0-by-0 from none. */
  Array(std::u16string_view units) {
    *this = zeros<char16_t>(units.empty() ? 0 : 1, units.size());
    std::copy(units.begin(), units.end(), dataOf<char16_t>());
  }
  /** A column of cells, each a text. */
  Array(const std::vector<std::string>& texts);

  /** Takes over a handle of the C interface, to destroy it; null makes an empty Array. */
  static Array adopt(hcyArray* handle) noexcept {
    Array array;
    array.handle_.reset(handle);
    return array;
  }

  /** A rows-by-columns array of zeros (false, NUL) of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  static Array zeros(std::size_t rows, std::size_t columns) {
    const std::size_t shape[] = {rows, columns};
    detail::requireSizes(shape, 2, false);
    if constexpr (std::is_same_v<T, bool>) {
      return adopt(hcyCreateLogicalMatrix(rows, columns));
    } else if constexpr (std::is_same_v<T, char16_t>) {
      return adopt(hcyCreateCharArray(2, shape));
    } else {
      return adopt(hcyCreateNumericMatrix(rows, columns, classOf<T>(), complexityOf<T>()));
    }
  }

  /** An array of zeros (false, NUL) of the class of T. */
  template <class T, detail::IfValue<T> = 0>
  static Array zeros(const Shape& shape) {
    detail::requireSizes(shape.data(), shape.size(), false);
    if constexpr (std::is_same_v<T, bool>) {
      return adopt(hcyCreateLogicalArray(shape.size(), shape.data()));
    } else if constexpr (std::is_same_v<T, char16_t>) {
      return adopt(hcyCreateCharArray(shape.size(), shape.data()));
    } else {
      return adopt(
          hcyCreateNumericArray(shape.size(), shape.data(), classOf<T>(), complexityOf<T>()));
    }
  }

  /** A matrix by its rows: `fromRows<double>({{2, 1}, {1, 3}})`. Throws UsageError for rows that
   *  differ in length. */
  template <class T, detail::IfValue<T> = 0>
  static Array fromRows(std::initializer_list<std::initializer_list<T>> rows) {
    const std::size_t columns = rows.size() == 0 ? 0 : rows.begin()->size();
    std::vector<T> values(rows.size() * columns);
    std::size_t i = 0;
    for (const std::initializer_list<T>& row : rows) {
      if (row.size() != columns) throw UsageError("the rows differ in length");
      std::size_t at = i++;
      for (const T& value : row) {
        values[at] = value;
        at += rows.size();
      }
    }
    return Array(values, {rows.size(), columns});
  }

  /** A cell array whose elements were never set. */
  static Array cells(const Shape& shape) {
    detail::requireSizes(shape.data(), shape.size(), false);
    return adopt(hcyCreateCellArray(shape.size(), shape.data()));
  }
  /** A column of cells with these elements. */
  static Array cellOf(std::initializer_list<Input> elements);

  /** A struct array with these fields, never set. */
  static Array structs(const Shape& shape, const std::vector<std::string>& fields);
  /** A 1-by-1 struct array: `structOf({{"name", "Ada"}, {"born", 1815.0}})`. Throws UsageError when
   *  a field is named twice. */
  static Array structOf(std::initializer_list<Field> fields);

  /** A sparse array with room for nzmax stored elements, to be filled through span(),
   *  rowIndices() and columnStarts(). T is double, std::complex<double> or bool. */
  template <class T>
  static Array sparse(std::size_t rows, std::size_t columns, std::size_t nzmax) {
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
  static Array sparse(std::size_t rows, std::size_t columns, std::vector<Entry<T>> entries);

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
  /** The linear index of an element with zero-based subscripts; throws UsageError unless there is
   *  one for each dimension, and below it. */
  std::size_t index(const Shape& subscripts) const {
    const Shape dimensions = shape();
    bool isInside = subscripts.size() == dimensions.size();
    for (std::size_t i = 0; isInside && i < dimensions.size(); ++i) {
      isInside = subscripts[i] < dimensions[i];
    }
    if (!isInside) throw UsageError("the subscripts are outside the array");
    return hcyCalcSingleSubscript(handle(), subscripts.size(), subscripts.data());
  }

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
  /** The elements would not outlive the array. */
  template <class T>
  Span<const T> span() const&& = delete;

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
  /** The elements would not outlive the array. */
  template <class T>
  Span<const T> imaginary() const&& = delete;

  /** A copy of the elements, as span() const shows them; with T a std::complex, of both parts.
   *  With T a std::string, the texts of the elements of a cell array. Throws as span() and
   *  toString(). */
  template <class T>
  std::vector<T> toVector() const;

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
  /** The rows would not outlive the array. */
  Span<const std::size_t> rowIndices() const&& = delete;

  /** The column starts of a sparse array, columns() + 1 of them. Throws as rowIndices(). */
  Span<std::size_t> columnStarts() & { return starts(); }
  /** The read-only overload. */
  Span<const std::size_t> columnStarts() const& { return starts(); }
  /** The starts would not outlive the array. */
  Span<const std::size_t> columnStarts() const&& = delete;

  /** The stored elements of a sparse array, column after column. Throws UsageError when the program
   *  has set column starts or rows that lead outside it, and as span() and rowIndices(). */
  template <class T>
  std::vector<Entry<T>> entries() const;

  /** Element i of a cell array: to read, to assign to, or to go on into (`cell[1]("name")`). */
  Slot operator[](std::size_t i) &;
  /** Element i of a cell array, as a handle of its own. Throws UsageError when there is none,
   *  IncompleteReply when it did not arrive or not as a whole, or is of a class that the library
   *  does not serve. */
  Array operator[](std::size_t i) const&;
  /** The same. */
  Array operator[](std::size_t i) && { return static_cast<const Array&>(*this)[i]; }

  /** A field of a 1-by-1 struct array, or of the first element of a larger one. */
  Slot operator()(const std::string& field) &;
  /** A field of element i of a struct array. */
  Slot operator()(std::size_t i, const std::string& field) &;
  /** A field, as a handle of its own. Throws as operator[]. */
  Array operator()(const std::string& field) const& { return (*this)(0, field); }
  /** The same of element i. */
  Array operator()(std::size_t i, const std::string& field) const&;
  /** The same. */
  Array operator()(const std::string& field) && {
    return static_cast<const Array&>(*this)(0, field);
  }
  /** The same. */
  Array operator()(std::size_t i, const std::string& field) && {
    return static_cast<const Array&>(*this)(i, field);
  }

  /** The names of the fields; none for an array that is no struct. */
  std::vector<std::string> fieldNames() const {
    std::vector<std::string> names(static_cast<std::size_t>(hcyGetNumberOfFields(handle())));
    for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = hcyGetFieldNameByNumber(handle(), static_cast<int>(i));
    }
    return names;
  }
  /** Whether it is a struct array with such a field. */
  bool hasField(const std::string& field) const {
    return hcyGetFieldNumber(handle(), detail::cText(field)) >= 0;
  }
  /** Adds a field behind the others, never set; nothing happens when it exists. Throws UsageError
   *  when the array is not a struct, IncompleteReply as resize(), std::bad_alloc when there is no
   *  room. */
  void addField(const std::string& field) {
    if (!isStruct()) throw wrongClass("struct");
    requireElements();
    if (hcyAddField(handle(), detail::cText(field)) < 0) throw std::bad_alloc();
  }
  /** Removes a field from every element. Throws UsageError when there is none, IncompleteReply as
   *  resize(). */
  void removeField(const std::string& field) {
    if (!hasField(field)) throw UsageError("there is no field " + field);
    requireElements();
    hcyRemoveField(handle(), hcyGetFieldNumber(handle(), field.c_str()));
  }

 private:
  friend class Input;
  friend class Slot;

  template <class T>
  static constexpr hcyClassID classOf() {
    return detail::Element<detail::Part<T>>::classId;
  }
  template <class T>
  static constexpr hcyComplexity complexityOf() {
    return detail::Parts<T>::areTwo ? hcyCOMPLEX : hcyREAL;
  }

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
    if (count != size()) {
      throw UsageError(std::to_string(count) + " values do not fill " + std::to_string(size()) +
                       " elements");
    }
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
  std::string name; /**< name of the field */
  Input value;      /**< what it holds */
};

/**
 * The place of an element in a cell array or of a field in a struct array.
 *
 * It is for use where it is written: `cell[0] = 2.0`, `Array name = s("name")`,
 * `s(1, "list")[2].scalar()`. One that was stored (`auto slot = cell[0]`) does not compile when it
 * is used, for it does not keep its container alive.
 *
 * An assignment behind more than one index or name stores each array on the way back into its
 * container, and so copies what they hold: where there is much to set, take the inner array out,
 * fill it, and store it once.
 */
class Slot {
 public:
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  ~Slot() = default;

  /** Stores the value, which is shared with the container; throws UsageError when there is no such
   *  element or field, IncompleteReply when the container came with a reply that ended before it.
   */
  void operator=(const Array& value) && { store(value.handle()); }
  /** Stores what another place holds. */
  void operator=(Slot&& other) && { store(std::move(other).get().handle()); }

  /** A handle over the element; throws UsageError when there is none, IncompleteReply when it did
   * not arrive or not as a whole, or is of a class that the library does not serve. */
  Array get() && { return fetch(); }
  /** As get(). */
  operator Array() && { return fetch(); }

  double scalar() && { return fetch().scalar(); }          /**< As Array::scalar(). */
  std::string toString() && { return fetch().toString(); } /**< As Array::toString(). */
  /** As Array::toVector(). */
  template <class T>
  std::vector<T> toVector() && {
    return fetch().toVector<T>();
  }

  /** Element i of the cell array in this place. */
  Slot operator[](std::size_t i) && { return {fetch(), this, i, nullptr}; }
  /** A field of the struct array in this place. */
  Slot operator()(const std::string& field) && { return {fetch(), this, 0, detail::cText(field)}; }
  /** A field of element i of the struct array in this place. */
  Slot operator()(std::size_t i, const std::string& field) && {
    return {fetch(), this, i, detail::cText(field)};
  }

 private:
  friend class Array;

  // The name is null for an element of a cell array. All that is pointed to lives until the end of
  // the full expression.
  Slot(hcyArray* container, std::size_t index, const char* field) noexcept
      : container_(container), index_(index), field_(field) {}
  Slot(Array container, const Slot* outer, std::size_t index, const char* field) noexcept
      : owned_(std::move(container)),
        outer_(outer),
        container_(owned_.get()),
        index_(index),
        field_(field) {}

  hcyArray* find() const {
    return field_ == nullptr ? hcyGetCell(container_, index_)
                             : hcyGetField(container_, index_, field_);
  }

  Array fetch() const {
    Array element = Array::adopt(find());
    if (!element) {
      require();
      throwMissing();
    }
    if (!detail::isWhole(element.get())) {
      throw IncompleteReply(place() + " is incomplete: " + detail::lackOf(element.get()) +
                            detail::limitMayHaveCut);
    }
    return element;
  }

  void store(hcyArray* value) const {
    require();
    put(value);
    // Nothing is stored beyond the elements that arrived.
    requireArrived();
    // Where a container was got from, it can be put back.
    for (const Slot* inner = this; inner->outer_ != nullptr; inner = inner->outer_) {
      inner->outer_->put(inner->container_);
    }
  }

  void requireArrived() const {
    if (!Array::adopt(find())) throwMissing();
  }

  void put(hcyArray* value) const {
    if (field_ == nullptr) {
      hcySetCell(container_, index_, value);
    } else {
      hcySetField(container_, index_, field_, value);
    }
  }

  // "element 2 in field sides of element 0"
  std::string place() const {
    const std::string element = "element " + std::to_string(index_);
    return (field_ == nullptr ? element : "field " + std::string(field_) + " of " + element) +
           (outer_ == nullptr ? "" : " in " + outer_->place());
  }

  [[noreturn]] void throwMissing() const {
    throw IncompleteReply(
        place() +
        " did not come with the reply, or is of a class that the library does not "
        "serve" +
        detail::limitMayHaveCut);
  }

  // Throws unless there is such an element or field.
  void require() const {
    if (!(field_ == nullptr ? hcyIsCell(container_) : hcyIsStruct(container_))) {
      throw UsageError("the array is " + std::string(hcyGetClassName(container_)) + ", not " +
                       (field_ == nullptr ? "cell" : "struct"));
    }
    if (index_ >= hcyGetNumberOfElements(container_)) {
      throw UsageError("there is no element " + std::to_string(index_));
    }
    if (field_ != nullptr && hcyGetFieldNumber(container_, field_) < 0) {
      throw UsageError("there is no field " + std::string(field_));
    }
  }

  Array owned_;
  const Slot* outer_ = nullptr;
  hcyArray* container_;
  std::size_t index_;
  const char* field_;
};

inline Slot Array::operator[](std::size_t i) & { return {handle(), i, nullptr}; }
inline Array Array::operator[](std::size_t i) const& { return Slot(handle(), i, nullptr); }
inline Slot Array::operator()(const std::string& field) & { return (*this)(0, field); }
inline Slot Array::operator()(std::size_t i, const std::string& field) & {
  return {handle(), i, detail::cText(field)};
}
inline Array Array::operator()(std::size_t i, const std::string& field) const& {
  return Slot(handle(), i, detail::cText(field));
}

inline Array::Array(const std::vector<std::string>& texts) : Array(cells({texts.size(), 1})) {
  for (std::size_t i = 0; i < texts.size(); ++i) (*this)[i] = texts[i];
}

inline Array Array::cellOf(std::initializer_list<Input> elements) {
  Array made = cells({elements.size(), 1});
  std::size_t i = 0;
  for (const Input& element : elements) hcySetCell(made.get(), i++, element.get());
  return made;
}

inline Array Array::structs(const Shape& shape, const std::vector<std::string>& fields) {
  if (fields.size() > detail::largestSize) throw UsageError("there are too many fields");
  std::vector<const char*> names;
  names.reserve(fields.size());
  for (const std::string& field : fields) names.push_back(detail::cText(field));
  detail::requireSizes(shape.data(), shape.size(), false, fields.size());
  return adopt(hcyCreateStructArray(shape.size(), shape.data(), static_cast<int>(names.size()),
                                    names.data()));
}

inline Array Array::structOf(std::initializer_list<Field> fields) {
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (const Field& field : fields) names.push_back(field.name);
  Array made = structs({1, 1}, names);
  int number = 0;
  for (const Field& field : fields) {
    if (hcyGetFieldNumber(made.get(), field.name.c_str()) != number++) {
      throw UsageError("two fields have the same name: " + field.name);
    }
    hcySetField(made.get(), 0, field.name.c_str(), field.value.get());
  }
  return made;
}

inline void Array::requireElements() const {
  requireWhole();
  if (size() == 0) return;
  const std::size_t last = size() - 1;
  if (isCell()) {
    Slot(get(), last, nullptr).requireArrived();
  } else if (const int fields = hcyGetNumberOfFields(get()); fields > 0) {
    Slot(get(), last, hcyGetFieldNameByNumber(get(), fields - 1)).requireArrived();
  }
}

inline void Array::resize(const Shape& shape) {
  if (shape.empty()) throw UsageError("the shape has no dimensions");
  // Checked before the library writes any dimension, which it would not take back.
  const int fields = std::max(hcyGetNumberOfFields(handle()), 1);
  detail::requireSizes(shape.data(), shape.size(), false, static_cast<std::uint64_t>(fields));
  if (isSparse()) detail::requireSizes(shape.data(), shape.size(), true);
  requireElements();
  if (hcySetDimensions(handle(), shape.data(), shape.size()) != 0) throw std::bad_alloc();
}

template <class T>
Array Array::sparse(std::size_t rows, std::size_t columns, std::vector<Entry<T>> entries) {
  std::sort(entries.begin(), entries.end(), [](const Entry<T>& a, const Entry<T>& b) {
    return a.column != b.column ? a.column < b.column : a.row < b.row;
  });
  Array made = sparse<T>(rows, columns, entries.size());
  const Span<std::size_t> starts = made.columnStarts();
  const Span<std::size_t> rowOf = made.rowIndices();
  const auto values = made.span<detail::Part<T>>();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Entry<T>& entry = entries[i];
    if (entry.row >= rows || entry.column >= columns) {
      throw UsageError("an entry is outside the array");
    }
    if (i > 0 && entry.row == rowOf[i - 1] && entry.column == entries[i - 1].column) {
      throw UsageError("two entries are in one place");
    }
    rowOf[i] = entry.row;
    starts[entry.column + 1] = i + 1;
    if constexpr (detail::Parts<T>::areTwo) {
      values[i] = entry.value.real();
      hcyGetPi(made.get())[i] = entry.value.imag();
    } else {
      values[i] = entry.value;
    }
  }
  // Columns without entries start where the one before ends.
  for (std::size_t j = 0; j < columns; ++j) starts[j + 1] = std::max(starts[j + 1], starts[j]);
  return made;
}

template <class T>
std::vector<T> Array::toVector() const {
  if constexpr (std::is_same_v<T, std::string>) {
    std::vector<std::string> texts;
    if (!isCell()) throw wrongClass("cell");
    for (std::size_t i = 0; i < size(); ++i) texts.push_back((*this)[i].toString());
    return texts;
  } else {
    using Stored = typename detail::Element<detail::Part<T>>::Stored;
    const Span<const Stored> real = span<Stored>();
    std::vector<T> values(real.begin(), real.end());
    if constexpr (detail::Parts<T>::areTwo) {
      const Span<const Stored> parts = imaginary<Stored>();
      for (std::size_t i = 0; i < parts.size(); ++i) values[i].imag(parts[i]);
    }
    return values;
  }
}

template <class T>
std::vector<Entry<T>> Array::entries() const {
  const Span<const std::size_t> starts = columnStarts();
  const Span<const std::size_t> rowOf = rowIndices();
  const std::vector<T> values = toVector<T>();
  std::vector<Entry<T>> found;
  found.reserve(values.size());
  for (std::size_t j = 0; j < columns(); ++j) {
    if (starts[j] > starts[j + 1] || starts[j + 1] > std::min(values.size(), rowOf.size())) {
      throw UsageError("the columns of the sparse array lead outside it");
    }
    for (std::size_t i = starts[j]; i < starts[j + 1]; ++i) {
      if (rowOf[i] >= rows()) throw UsageError("a row of the sparse array is outside it");
      found.push_back({rowOf[i], j, values[i]});
    }
  }
  return found;
}

/** @} */

/**
 * @defgroup cpp_runtime C++: client runtime
 * @brief Start, configure, call.
 * @{
 */

/**
 * Keeps the library initialised: from the first Library of the process to the end of the last one.
 * They may be made and destroyed on any threads at once.
 *
 * The program and the shared objects that it is linked with count together, even if they are
 * compiled with hidden symbols. A plug-in that dlopen() loads counts together with the program only
 * if the program exports its symbols (`-rdynamic`); otherwise the end of the plug-in's last Library
 * ends the library for all, as hcyTerminate() does.
 */
class Library {
 public:
  /** Initialises the library unless another Library has; throws InitializationError when it does
   *  not start, or has been started for an older version by other code. */
  Library() : runtime_(begin()) {}

  /** The table of the C interface. Throws UsageError when the Library has been moved from. */
  const hcyClientRuntime* runtime() const {
    if (!runtime_) throw UsageError("the Library has been moved from");
    return runtime_.get();
  }

 private:
  static hcyClientRuntime* begin() {
    detail::Libraries& libraries = detail::libraries;
    const std::lock_guard<std::mutex> lock(libraries.mutex);
    if (libraries.count == 0) {
      hcyClientRuntime* const runtime = hcyInitializeEx(HCY_CLIENT_RUNTIME_1_1);
      if (runtime == nullptr) throw InitializationError(hcyGetInitializationErrorMessage());
      if (runtime->setPeerVerification == nullptr) {
        throw InitializationError("the library has been started for interface version 1.0");
      }
      libraries.runtime = runtime;
    }
    ++libraries.count;
    return libraries.runtime;
  }

  struct Terminator {
    void operator()(hcyClientRuntime*) const noexcept {
      const std::lock_guard<std::mutex> lock(detail::libraries.mutex);
      if (--detail::libraries.count == 0) hcyTerminate();
    }
  };

  std::unique_ptr<hcyClientRuntime, Terminator> runtime_;
};

/** The settings of contexts that are made from it afterwards. The setters return the
 *  configuration; they throw UsageError for a value that the library cannot hold, std::bad_alloc
 *  when memory is exhausted. The comments of hcyClientRuntime say what each setting means. */
class Config {
 public:
  /** A configuration with the defaults of the library. */
  explicit Config(const Library& library)
      : runtime_(library.runtime()), config_(create(runtime_), {runtime_}) {}

  /** How long one call may take, connection and transfer together; 0 for no limit. */
  Config& setTimeout(std::chrono::seconds timeout) {
    if (timeout.count() < 0 || timeout.count() > std::numeric_limits<std::uint32_t>::max()) {
      throw UsageError("the time-out is out of range");
    }
    runtime_->setTimeOut(settings(), static_cast<std::uint32_t>(timeout.count()));
    return *this;
  }
  /** The size in bytes of the largest reply body that is accepted. A larger one fails the call if
   *  its length is declared. Otherwise it is cut there, and what is incomplete then throws
   *  IncompleteReply. */
  Config& setResponseSizeLimit(std::uint32_t bytes) {
    runtime_->setResponseSizeLimit(settings(), bytes);
    return *this;
  }
  /** The file (PEM) of the client's certificate. */
  Config& setClientCertificateFile(const std::string& file) {
    return setText(runtime_->setClientCertFile, runtime_->getClientCertFile, file);
  }
  /** The file (PEM) of the private key of the client's certificate. */
  Config& setClientPrivateKeyFile(const std::string& file) {
    return setText(runtime_->setClientPrivateKeyFile, runtime_->getClientPrivateKeyFile, file);
  }
  /** The pass phrase of the private key. */
  Config& setPrivateKeyPassPhrase(const std::string& passPhrase) {
    return setText(runtime_->setPrivateKeyPasswd, runtime_->getPrivateKeyPasswd, passPhrase);
  }
  /** The file (PEM) of the authorities that the server's certificate is checked against. */
  Config& setAuthorityFile(const std::string& file) {
    return setText(runtime_->setCAFile, runtime_->getCAFile, file);
  }
  /** The file (PEM) of certificate revocation lists. */
  Config& setRevocationListFile(const std::string& file) {
    return setText(runtime_->setRevocationListFile, runtime_->getRevocationListFile, file);
  }
  /** Whether the server's certificate must name the host of the URL. */
  Config& setHostnameVerification(bool verify) {
    runtime_->setHostnameVerification(settings(), verify);
    return *this;
  }
  /** Whether the server's certificate chain is verified. */
  Config& setPeerVerification(bool verify) {
    runtime_->setPeerVerification(settings(), verify);
    return *this;
  }

  /** The table of the C interface, by which get() may be asked for its settings. Throws UsageError
   *  when the Config has been moved from. */
  const hcyClientRuntime* runtime() const {
    static_cast<void>(settings());
    return runtime_;
  }
  /** The configuration in the C interface, which stays owned here; null if moved from. */
  hcyClientConfig* get() const noexcept { return config_.get(); }

 private:
  struct Destroyer {
    const hcyClientRuntime* runtime;
    void operator()(hcyClientConfig* config) const noexcept { runtime->destroyConfig(config); }
  };

  static hcyClientConfig* create(const hcyClientRuntime* runtime) {
    hcyClientConfig* config = nullptr;
    if (runtime->createConfig(&config) == 0) return config;
    if (config != nullptr) runtime->destroyConfig(config);
    throw std::bad_alloc();
  }

  hcyClientConfig* settings() const {
    if (!config_) throw UsageError("the Config has been moved from");
    return get();
  }

  // The library leaves a setting as it was when it cannot store the text.
  Config& setText(void (*set)(hcyClientConfig*, const char*),
                  const char* (*stored)(const hcyClientConfig*), const std::string& text) {
    set(settings(), detail::cText(text));
    if (stored(settings()) != text) throw std::bad_alloc();
    return *this;
  }

  const hcyClientRuntime* runtime_;
  std::unique_ptr<hcyClientConfig, Destroyer> config_;
};

/**
 * The outputs of a call: a vector of arrays that checks every index.
 *
 * What is asked of a temporary (`context.feval(url)[0]`) is moved out of it, so that nothing looks
 * into outputs that are gone: `context.feval(url)[0].span<double>()` does not compile.
 */
class Outputs : public std::vector<Array> {
 public:
  Outputs() = default;

  /** Output i; throws UsageError when there is none. */
  Array& at(std::size_t i) & { return vector::operator[](checked(i)); }
  /** The read-only overload. */
  const Array& at(std::size_t i) const& { return vector::operator[](checked(i)); }
  /** Moved out. */
  Array at(std::size_t i) && { return std::move(at(i)); }
  /** The outputs are gone after the expression. */
  Array at(std::size_t i) const&& = delete;

  Array& operator[](std::size_t i) & { return at(i); }            /**< As at(). */
  const Array& operator[](std::size_t i) const& { return at(i); } /**< As at(). */
  Array operator[](std::size_t i) && { return std::move(at(i)); } /**< As at(). */
  Array operator[](std::size_t i) const&& = delete;               /**< As at(). */
  Array& front() & { return at(0); }                              /**< As at(0). */
  const Array& front() const& { return at(0); }                   /**< As at(0). */
  Array front() && { return std::move(at(0)); }                   /**< As at(0). */
  Array front() const&& = delete;                                 /**< As at(0). */
  Array& back() & { return at(size() - 1); }                      /**< As at(size() - 1). */
  const Array& back() const& { return at(size() - 1); }           /**< As at(size() - 1). */
  Array back() && { return std::move(at(size() - 1)); }           /**< As at(size() - 1). */
  Array back() const&& = delete;                                  /**< As at(size() - 1). */

 private:
  std::size_t checked(std::size_t i) const {
    if (i < size()) return i;
    throw UsageError("output " + std::to_string(i) + " does not exist: the call returned " +
                     std::to_string(size()));
  }
};

/** One connection to a server, kept alive between calls; used by one thread at a time. It is not to
 *  be moved or destroyed during a call. */
class Context {
 public:
  /** A context with a copy of the settings; throws InitializationError when memory or a transfer
   *  handle cannot be had, UsageError when the Config has been moved from. */
  explicit Context(const Config& config)
      : runtime_(config.runtime()),
        responseSizeLimit_(runtime_->getResponseSizeLimit(config.get())),
        context_(create(config), {runtime_}) {}

  /**
   * Evaluates a function on a server and returns its outputs: hcyClientRuntime::feval.
   *
   * @param url     full URL of the function: http or https.
   * @param inputs  arrays, or values that become arrays: `{a, 2.0, "text", {1.0, 2.0}}`.
   * @param nargout number of outputs wanted.
   * @return nargout arrays.
   * @throws HttpError, FunctionError or TransportError when the call fails, IncompleteReply when an
   *         output did not arrive as a whole (the elements of cells and structs are looked at when
   *         they are read), UsageError when the call cannot be made: the URL is of another scheme
   * or none, the number of outputs is negative, an Array is empty, the Context has been moved from,
   * or another thread is calling on it.
   */
  Outputs feval(const std::string& url, std::initializer_list<Input> inputs = {}, int nargout = 1) {
    return call(url, inputs.begin(), inputs.size(), nargout);
  }
  /** The same with inputs that are arrays already. */
  Outputs feval(const std::string& url, const std::vector<Array>& inputs, int nargout = 1) {
    return call(url, inputs.data(), inputs.size(), nargout);
  }

  /** The context in the C interface, which stays owned here; null if moved from. */
  hcyClientContext* get() const noexcept { return context_.get(); }

 private:
  struct Destroyer {
    const hcyClientRuntime* runtime;
    void operator()(hcyClientContext* context) const noexcept { runtime->destroyContext(context); }
  };

  // What a call stores, to be destroyed unless it is taken.
  struct Received : detail::Handles<hcyArray*> {
    explicit Received(std::size_t count) : Handles(count), count_(count) {}
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    ~Received() {
      for (std::size_t i = 0; i < count_; ++i) hcyDestroyArray(data()[i]);
    }
    Array take(std::size_t i) noexcept { return Array::adopt(std::exchange(data()[i], nullptr)); }

   private:
    std::size_t count_;
  };

  // Keeps other threads out.
  class Turn {
   public:
    explicit Turn(detail::BusyFlag& flag) : flag_(flag) {
      if (!flag_.raise()) {
        throw UsageError("the Context is in use by another call: each thread needs one of its own");
      }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() { flag_.lower(); }

   private:
    detail::BusyFlag& flag_;
  };

  static hcyClientContext* create(const Config& config) {
    hcyClientContext* context = nullptr;
    if (config.runtime()->createContext(&context, config.get()) == 0) return context;
    if (context != nullptr) config.runtime()->destroyContext(context);
    throw InitializationError("memory or a transfer handle for a context cannot be had");
  }

  static const hcyArray* handleOf(const Input& input) { return input.get(); }
  static const hcyArray* handleOf(const Array& input) { return Input(input).get(); }

  template <class Inputs>
  Outputs call(const std::string& url, const Inputs* inputs, std::size_t nargin, int nargout) {
    if (!context_) throw UsageError("the Context has been moved from");
    detail::requireHttp(url);
    if (nargout < 0) throw UsageError("the number of outputs is negative");
    if (nargin > detail::largestSize) throw UsageError("there are too many inputs");
    const Turn turn(busy_);
    detail::Handles<const hcyArray*> handles(nargin);
    for (std::size_t i = 0; i < nargin; ++i) handles.data()[i] = handleOf(inputs[i]);
    const auto count = static_cast<std::size_t>(nargout);
    Received received(count);
    Outputs outputs;
    outputs.reserve(count);
    if (runtime_->feval(get(), detail::cText(url), nargout, received.data(),
                        static_cast<std::int32_t>(nargin), handles.data()) != 0) {
      throwFailure();
    }
    for (std::size_t i = 0; i < count; ++i) {
      if (!detail::isWhole(received.data()[i])) throwIncomplete(i, received.data()[i]);
      outputs.push_back(received.take(i));
    }
    return outputs;
  }

  [[noreturn]] void throwIncomplete(std::size_t number, const hcyArray* output) const {
    throw IncompleteReply("output " + std::to_string(number) +
                          " (counted from 0) is incomplete: " + detail::lackOf(output) +
                          "; the response size limit (Config::setResponseSizeLimit, here " +
                          std::to_string(responseSizeLimit_) + " bytes) may have cut the reply");
  }

  [[noreturn]] void throwFailure() const {
    struct Record : hcyErrorInfo {
      const hcyClientRuntime* runtime;
      explicit Record(const hcyClientRuntime* table) : hcyErrorInfo{}, runtime(table) {}
      Record(const Record&) = delete;
      Record& operator=(const Record&) = delete;
      ~Record() { runtime->destroyLastErrorInfo(this); }
    } record(runtime_);
    runtime_->getLastErrorInfo(get(), &record);
    if (record.kind == HCY_HTTP_ERROR) {
      const std::string_view line = record.details.http.statusMessage;
      throw HttpError(record.details.http.statusCode,
                      std::string(line.substr(0, line.find_first_of("\r\n"))));
    }
    if (record.kind != HCY_VORTEN_ERROR) throw TransportError(record.details.generic.details);
    const auto& error = record.details.vorten;
    std::vector<StackFrame> stack;
    for (std::size_t i = 0; error.stack != nullptr && i < error.stackDepth; ++i) {
      stack.push_back({error.stack[i].file, error.stack[i].name, error.stack[i].line});
    }
    throw FunctionError(error.message, error.identifier, std::move(stack));
  }

  const hcyClientRuntime* runtime_;
  std::uint32_t responseSizeLimit_;
  detail::BusyFlag busy_;
  std::unique_ptr<hcyClientContext, Destroyer> context_;
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_HCYCLIENT_HPP
