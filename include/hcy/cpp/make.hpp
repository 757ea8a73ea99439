/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file make.hpp
 * @brief Makes arrays from C++ values. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_MAKE_HPP
#define HCY_CPP_MAKE_HPP

#include <hcy/hcyclient.h>

#include <cstddef>
#include <hcy/cpp/array.hpp>
#include <hcy/cpp/input.hpp>
#include <initializer_list>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace hcyclient {

namespace detail {

inline UsageError unequalRows(std::size_t i, std::size_t length, std::size_t firstLength) {
  return UsageError("the rows differ in length: row " + std::to_string(i) + " has " +
                    std::to_string(length) + " elements, row 0 has " + std::to_string(firstLength));
}

}  // namespace detail

/** @addtogroup cpp_arrays
 *  @{ */

template <class T>
Array Array::zerosOf(const std::size_t* shape, std::size_t count) {
  detail::requireSizes(shape, count, false);
  if constexpr (std::is_same_v<T, bool>) {
    return adopt(hcyCreateLogicalArray(count, shape));
  } else if constexpr (std::is_same_v<T, char16_t>) {
    return adopt(hcyCreateCharArray(count, shape));
  } else {
    return adopt(hcyCreateNumericArray(count, shape, classOf<T>(), complexityOf<T>()));
  }
}

template <class Iterator>
void Array::assign(Iterator value, std::size_t count) {
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

template <class Iterator>
Array Array::filled(Iterator first, std::size_t count, const Shape& shape) {
  detail::requireSizes(shape.data(), shape.size(), false);
  std::size_t places = shape.empty() ? 0 : 1;
  for (const std::size_t dimension : shape) places *= dimension;
  if (count != places) {
    throw UsageError(std::to_string(count) + " values do not fill the shape " +
                     detail::shapeText(shape.data(), shape.size()));
  }
  Array made =
      zerosOf<typename std::iterator_traits<Iterator>::value_type>(shape.data(), shape.size());
  made.assign(first, count);
  return made;
}

template <class Iterator, detail::IfIterator<Iterator>>
Array::Array(Iterator first, Iterator last) {
  using Traits = std::iterator_traits<Iterator>;
  if constexpr (std::is_base_of_v<std::forward_iterator_tag, typename Traits::iterator_category>) {
    const auto count = static_cast<std::size_t>(std::distance(first, last));
    *this = filled(first, count, {count, 1});
  } else {
    *this = Array(std::vector<typename Traits::value_type>(first, last));
  }
}

template <class T, class Rows>
Array Array::matrixOf(const Rows& rows) {
  const auto m = static_cast<std::size_t>(std::distance(std::begin(rows), std::end(rows)));
  const std::size_t shape[] = {m, m == 0 ? 0 : std::size(*std::begin(rows))};
  std::size_t i = 0;
  for (const auto& row : rows) {
    if (std::size(row) != shape[1]) throw detail::unequalRows(i, std::size(row), shape[1]);
    ++i;
  }
  Array made = zerosOf<T>(shape, 2);
  using Stored = typename detail::Element<detail::Part<T>>::Stored;
  Stored* const real = made.dataOf<Stored>();
  i = 0;
  for (const auto& row : rows) {
    std::size_t at = i++;
    for (const T value : row) {
      if constexpr (detail::Parts<T>::areTwo) {
        real[at] = value.real();
        static_cast<Stored*>(hcyGetImagData(made.get()))[at] = value.imag();
      } else {
        real[at] = value;
      }
      at += m;
    }
  }
  return made;
}

inline Array::Array(const std::vector<std::string>& texts) : Array(cells({texts.size(), 1})) {
  for (std::size_t i = 0; i < texts.size(); ++i) hcySetCell(get(), i, Input(texts[i]).get());
}

inline Array Array::cellOf(std::initializer_list<Input> elements) {
  Array made = cells({elements.size(), 1});
  std::size_t i = 0;
  for (const Input& element : elements) hcySetCell(made.get(), i++, element.get());
  return made;
}

template <class R, detail::IfRange<R>>
Array Array::cellOf(const R& elements) {
  if constexpr (!detail::isMultiPass<R>) {
    std::vector<std::decay_t<decltype(*std::begin(elements))>> kept;
    for (auto&& element : elements) kept.push_back(std::forward<decltype(element)>(element));
    return cellOf(kept);
  } else {
    const auto count = std::distance(std::begin(elements), std::end(elements));
    Array made = cells({count, 1});
    std::size_t i = 0;
    for (const auto& element : elements) hcySetCell(made.get(), i++, Input(element).get());
    return made;
  }
}

inline Array Array::structs(const Shape& shape, const std::vector<std::string>& fields) {
  if (fields.size() > detail::largestSize) throw UsageError("there are too many fields");
  std::vector<const char*> names;
  names.reserve(fields.size());
  for (const std::string& field : fields) names.push_back(CString(field).c_str());
  detail::requireSizes(shape.data(), shape.size(), false, fields.size());
  return adopt(hcyCreateStructArray(shape.size(), shape.data(), static_cast<int>(names.size()),
                                    names.data()));
}

// Stores a field that must be new.
inline void Array::addValue(const char* name, hcyArray* value) {
  if (hcyGetFieldNumber(get(), name) >= 0) {
    throw UsageError("two fields have the same name: " + std::string(name));
  }
  if (hcyAddField(get(), name) < 0) throw std::bad_alloc();
  hcySetField(get(), 0, name, value);
}

inline Array Array::structOf(std::initializer_list<Field> fields) {
  Array made = structs({1, 1}, {});
  for (const Field& field : fields) made.addValue(field.name.c_str(), field.value.get());
  return made;
}

template <class R, detail::IfRange<R>>
Array Array::structOf(const R& fields) {
  Array made = structs({1, 1}, {});
  for (const auto& [name, value] : fields) {
    made.addValue(CString(name).c_str(), Input(value).get());
  }
  return made;
}

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_MAKE_HPP
