/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file describe.hpp
 * @brief The messages of UsageError about an array. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_DESCRIBE_HPP
#define HCY_CPP_DESCRIBE_HPP

#include <hcy/hcyclient.h>

#include <cstddef>
#include <hcy/cpp/error.hpp>
#include <hcy/cpp/shape.hpp>
#include <string>
#include <string_view>

namespace hcyclient {

namespace detail {

// "the 2-by-3 double array"
inline std::string described(const hcyArray* array) {
  const std::size_t count = hcyGetNumberOfDimensions(array);
  std::string text = "the ";
  if (count != 0) text += shapeText(hcyGetDimensions(array), count) + " ";
  if (hcyIsSparse(array)) text += "sparse ";
  if (hcyIsComplex(array)) text += "complex ";
  return text + hcyGetClassName(array) + " array";
}

// How the contents of an array of this class are read.
inline std::string_view readingHint(const hcyArray* array) {
  if (hcyIsChar(array)) return ": toString() reads it";
  if (hcyIsCell(array)) return ": cell[i] reads an element";
  if (hcyIsStruct(array)) return ": s(\"name\") reads a field";
  if (hcyIsSparse(array)) return ": entries<T>() reads and converts its entries";
  return ": toVector<T>() reads and converts its elements";
}

inline UsageError isNot(const hcyArray* array, std::string_view wanted) {
  return UsageError(described(array).append(" is not ").append(wanted).append(readingHint(array)));
}

inline UsageError noElement(const hcyArray* array, std::size_t i) {
  const std::size_t count = hcyGetNumberOfElements(array);
  return UsageError(described(array) + " has no element " + std::to_string(i) +
                    (count == 0 ? "" : "; the last one is " + std::to_string(count - 1)));
}

// The same for subscripts, of which there may be more or fewer than dimensions.
inline UsageError noElement(const hcyArray* array, const std::size_t* subscripts,
                            std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += (i == 0 ? "" : ", ") + std::to_string(subscripts[i]);
  }
  return UsageError(described(array) + " has no element (" + text + ")");
}

inline UsageError noField(const hcyArray* array, std::string_view field) {
  return UsageError(described(array).append(" has no field ").append(field) +
                    ": fieldNames() returns its fields");
}

inline UsageError notOneElement(const hcyArray* array) {
  const std::size_t count = hcyGetNumberOfElements(array);
  return UsageError("expected one element, but " + described(array) + " has " +
                    std::to_string(count) +
                    (count == 0 ? ": see value_or()" : std::string(readingHint(array))));
}

inline UsageError noNumber(const hcyArray* array) {
  return UsageError(described(array) + " has no number to read" +
                    (hcyIsEmpty(array) ? "" : std::string(readingHint(array))));
}

inline UsageError notExact(const hcyArray* array, std::size_t i, std::string_view className) {
  return UsageError("element " + std::to_string(i) + " of " + described(array) +
                    " cannot be represented exactly as " + std::string(className));
}

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_DESCRIBE_HPP
