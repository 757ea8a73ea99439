/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file read.hpp
 * @brief Reads elements of an array as C++ values. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_READ_HPP
#define HCY_CPP_READ_HPP

#include <hcy/hcyclient.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/convert.hpp>
#include <hcy/cpp/describe.hpp>
#include <hcy/cpp/slot.hpp>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace hcyclient {

namespace detail {

template <class T>
struct TypeTag {
  using Type = T;
};

}  // namespace detail

/** @addtogroup cpp_arrays
 *  @{ */

// Calls `use` with the type that stores the numbers or logical values of the array.
template <class Use>
auto ArrayElements::withElementType(const Use& use) const {
  switch (classId()) {
    case hcyUINT8_CLASS:
      return use(detail::TypeTag<std::uint8_t>());
    case hcyINT8_CLASS:
      return use(detail::TypeTag<std::int8_t>());
    case hcyUINT16_CLASS:
      return use(detail::TypeTag<std::uint16_t>());
    case hcyINT16_CLASS:
      return use(detail::TypeTag<std::int16_t>());
    case hcyUINT32_CLASS:
      return use(detail::TypeTag<std::uint32_t>());
    case hcyINT32_CLASS:
      return use(detail::TypeTag<std::int32_t>());
    case hcyUINT64_CLASS:
      return use(detail::TypeTag<std::uint64_t>());
    case hcyINT64_CLASS:
      return use(detail::TypeTag<std::int64_t>());
    case hcySINGLE_CLASS:
      return use(detail::TypeTag<float>());
    case hcyDOUBLE_CLASS:
      return use(detail::TypeTag<double>());
    case hcyLOGICAL_CLASS:
      return use(detail::TypeTag<bool>());
    default:
      throw wrongClass("numeric or logical");
  }
}

inline std::size_t ArrayHandle::linearIndex(const std::size_t* subscripts,
                                            std::size_t count) const {
  const Span<const std::size_t> sizes = dimensions();
  if (count != sizes.size() ||
      !std::equal(sizes.begin(), sizes.end(), subscripts,
                  [](std::size_t size, std::size_t subscript) { return subscript < size; })) {
    throw detail::noElement(get(), subscripts, count);
  }
  return hcyCalcSingleSubscript(get(), count, subscripts);
}

// The index at which a sparse array stores an element; the number of stored ones if it does not.
inline std::size_t ArrayElements::storedIndex(std::size_t i) const {
  const Span<const std::size_t> starts = columnStarts();
  const Span<const std::size_t> rowOf = rowIndices();
  const std::size_t column = i / rows();
  // The program may have given the array more than two dimensions.
  if (column >= columns()) return rowOf.size();
  const std::size_t* const end = rowOf.begin() + std::min(starts[column + 1], rowOf.size());
  const std::size_t* const first = rowOf.begin() + std::min(starts[column], rowOf.size());
  const std::size_t* const found = first < end ? std::find(first, end, i % rows()) : end;
  return found == end ? rowOf.size() : static_cast<std::size_t>(found - rowOf.begin());
}

// Reads element i of span(); returns false if T cannot represent it exactly.
template <class T>
bool ArrayElements::readExactly(std::size_t i, T& value) const {
  if constexpr (std::is_same_v<T, char16_t>) {
    value = span<char16_t>()[i];
    return true;
  } else {
    return withElementType([this, i, &value](auto tag) {
      using Stored = typename decltype(tag)::Type;
      Stored imaginaryPart{};
      if constexpr (detail::isNumeric<Stored>) {
        if (this->isComplex()) {
          const Span<const Stored> parts = this->imaginary<Stored>();
          if (i < parts.size()) imaginaryPart = parts[i];
        }
      }
      return detail::convertParts(this->span<Stored>()[i], imaginaryPart, value);
    });
  }
}

template <class T, class... More, detail::IfIntegers<More...>>
T ArrayElements::at(Size i, More... more) const {
  static_assert(detail::isValue<T>,
                "T is a number, bool, char16_t or std::complex; text is read by toString()");
  std::size_t place = i;
  if constexpr (sizeof...(More) > 0) {
    place = index(i, more...);
  } else if (place >= size()) {
    throw detail::noElement(get(), place);
  }
  const std::size_t stored = isSparse() ? storedIndex(place) : place;
  if (isSparse() && stored == rowIndices().size()) return T{};
  T value{};
  if (!readExactly(stored, value)) throw detail::notExact(get(), place, nameOf(classOf<T>()));
  return value;
}

template <class T>
T ArrayElements::scalar() const {
  static_assert(detail::isValue<T>,
                "T is a number, bool, char16_t or std::complex; text is read by toString()");
  if (size() != 1) {
    throw detail::notOneElement(get());
  }
  return at<T>(0);
}

template <class T, detail::IfValue<T>>
T Array::value_or(T fallback) const {
  return isEmpty() ? fallback : scalar<T>();
}

inline std::string Array::value_or(std::string_view fallback) const {
  return isEmpty() ? std::string(fallback) : toString();
}

template <class T, detail::IfValue<T>>
T Array::value_or(const CString& field, T fallback) const {
  if (!isStruct()) throw wrongClass("a struct array");
  return isEmpty() || !hasField(field) ? fallback : (*this)(field).value_or(fallback);
}

inline std::string Array::value_or(const CString& field, std::string_view fallback) const {
  if (!isStruct()) throw wrongClass("a struct array");
  return isEmpty() || !hasField(field) ? std::string(fallback) : (*this)(field).value_or(fallback);
}

template <class T>
std::vector<T> Array::value_or(std::vector<T> fallback) const {
  return isEmpty() ? std::move(fallback) : toVector<T>();
}

template <class T>
std::vector<T> Array::value_or(const CString& field, std::vector<T> fallback) const {
  if (!isStruct()) throw wrongClass("a struct array");
  if (isEmpty() || !hasField(field)) return fallback;
  return (*this)(field).value_or(std::move(fallback));
}

template <class A, detail::IfArray<A>>
Array Array::value_or(const CString& field, A fallback) const {
  if (!isStruct()) throw wrongClass("a struct array");
  if (isEmpty() || !hasField(field)) return fallback;
  return (*this)(field).value_or(std::move(fallback));
}

template <class T>
std::vector<T> ArrayElements::toVector() const {
  if constexpr (std::is_same_v<T, std::string>) {
    std::vector<std::string> texts;
    if (!isCell()) throw wrongClass("a cell array");
    const auto& cells = static_cast<const Array&>(*this);
    for (std::size_t i = 0; i < size(); ++i) texts.push_back(cells[i].toString());
    return texts;
  } else {
    static_assert(detail::isValue<T>,
                  "T is a number, bool, char16_t or std::complex; text is read by toString()");
    using Stored = typename detail::Element<detail::Part<T>>::Stored;
    if constexpr (!std::is_same_v<Stored, char16_t>) {
      if (!is<Stored>()) {
        std::vector<T> values;
        values.reserve(isSparse() ? countToRead() : size());
        convertEach<T, false>([&values](std::size_t, T value) { values.push_back(value); });
        return values;
      }
    }
    const Span<const Stored> real = span<Stored>();
    std::vector<T> values(real.begin(), real.end());
    if constexpr (detail::Parts<T>::areTwo) {
      const Span<const Stored> parts = imaginary<Stored>();
      for (std::size_t i = 0; i < parts.size(); ++i) values[i].imag(parts[i]);
    }
    return values;
  }
}

// Passes the elements to `take` as T, one after another; throws if T cannot represent one exactly.
// If T has no imaginary part, the real parts of complex numbers are passed; with onlyReal, a number
// with an imaginary part throws.
template <class T, bool onlyReal, class Take>
void ArrayElements::convertEach(const Take& take) const {
  withElementType([this, &take](auto tag) {
    using Stored = typename decltype(tag)::Type;
    const Span<const Stored> real = this->span<Stored>();
    Span<const Stored> parts;
    if constexpr ((detail::Parts<T>::areTwo || onlyReal) && detail::isNumeric<Stored>) {
      parts = this->imaginary<Stored>();
    }
    for (std::size_t i = 0; i < real.size(); ++i) {
      T value{};
      if (!detail::convertParts(real[i], i < parts.size() ? parts[i] : Stored{}, value)) {
        throw detail::notExact(this->get(), i, nameOf(classOf<T>()));
      }
      take(i, value);
    }
  });
}

template <class T>
Array Array::convertTo() const {
  static_assert(detail::isValue<T>,
                "T is a number, bool, char16_t or std::complex; text is read by toString()");
  using Stored = typename detail::Element<detail::Part<T>>::Stored;
  requireWhole();
  if (is<Stored>() && isComplex() == detail::Parts<T>::areTwo) return copy();
  if (isSparse()) throw wrongClass("full");
  if constexpr (std::is_same_v<T, char16_t>) {
    throw wrongClass("char");
  } else {
    Array made = zerosOf<T>(hcyGetDimensions(get()), hcyGetNumberOfDimensions(get()));
    Stored* const real = made.dataOf<Stored>();
    if constexpr (detail::Parts<T>::areTwo) {
      auto* const imaginaryParts = static_cast<Stored*>(hcyGetImagData(made.get()));
      convertEach<T, true>([real, imaginaryParts](std::size_t i, T value) {
        real[i] = value.real();
        imaginaryParts[i] = value.imag();
      });
    } else {
      convertEach<T, true>(
          [real](std::size_t i, T value) { real[i] = static_cast<Stored>(value); });
    }
    return made;
  }
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_READ_HPP
