/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file compare.hpp
 * @brief Whether two arrays are equal. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_COMPARE_HPP
#define HCY_CPP_COMPARE_HPP

#include <algorithm>
#include <complex>
#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/read.hpp>
#include <hcy/cpp/slot.hpp>
#include <hcy/cpp/sparse.hpp>
#include <string>
#include <vector>

namespace hcyclient {

namespace detail {

// The entries of a sparse array in order, without those that store a 0.
template <class T>
std::vector<Entry<T>> entriesOf(const Array& array) {
  std::vector<Entry<T>> entries = array.entries<T>();
  entries.erase(std::remove_if(entries.begin(), entries.end(),
                               [](const Entry<T>& entry) { return entry.value == T{}; }),
                entries.end());
  std::sort(entries.begin(), entries.end(), [](const Entry<T>& a, const Entry<T>& b) {
    return a.column != b.column ? a.column < b.column : a.row < b.row;
  });
  return entries;
}

template <class T>
bool haveEqualEntries(const Array& a, const Array& b) {
  const std::vector<Entry<T>> of = entriesOf<T>(a);
  const std::vector<Entry<T>> to = entriesOf<T>(b);
  return std::equal(of.begin(), of.end(), to.begin(), to.end(),
                    [](const Entry<T>& x, const Entry<T>& y) {
                      return x.row == y.row && x.column == y.column && x.value == y.value;
                    });
}

}  // namespace detail

inline bool Array::equals(const Array& other) const {
  if (!*this || !other) return !*this && !other;
  const Span<const std::size_t> sizes = dimensions();
  const Span<const std::size_t> others = other.dimensions();
  return classId() == other.classId() && isSparse() == other.isSparse() &&
         std::equal(sizes.begin(), sizes.end(), others.begin(), others.end()) &&
         equalElements(other);
}

inline bool Array::equalElements(const Array& other) const {
  if (isSparse()) {
    return is<bool>() ? detail::haveEqualEntries<bool>(*this, other)
                      : detail::haveEqualEntries<std::complex<double>>(*this, other);
  }
  if (isCell()) {
    for (std::size_t i = 0; i < size(); ++i) {
      if ((*this)[i] != other[i]) return false;
    }
    return true;
  }
  if (isStruct()) {
    const std::vector<std::string> names = fieldNames();
    if (names != other.fieldNames()) return false;
    for (std::size_t i = 0; !names.empty() && i < size(); ++i) {
      for (const std::string& name : names) {
        if ((*this)(i, name) != other(i, name)) return false;
      }
    }
    return true;
  }
  if (isText()) return equalValues<char16_t>(other);
  return withElementType(
      [this, &other](auto tag) { return this->equalValues<typename decltype(tag)::Type>(other); });
}

template <class T>
bool Array::equalValues(const Array& other) const {
  const Span<const T> values = span<T>();
  const Span<const T> others = other.span<T>();
  if (!std::equal(values.begin(), values.end(), others.begin(), others.end())) return false;
  if constexpr (detail::isNumeric<T>) {
    if (!isComplex() && !other.isComplex()) return true;
    const auto isZero = [](T part) { return part == T{}; };
    const Span<const T> parts = imaginary<T>();
    const Span<const T> otherParts = other.imaginary<T>();
    if (parts.empty()) return std::all_of(otherParts.begin(), otherParts.end(), isZero);
    if (otherParts.empty()) return std::all_of(parts.begin(), parts.end(), isZero);
    return std::equal(parts.begin(), parts.end(), otherParts.begin());
  } else {
    return true;
  }
}

}  // namespace hcyclient

#endif  // HCY_CPP_COMPARE_HPP
