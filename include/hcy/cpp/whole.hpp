/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file whole.hpp
 * @brief Checks whether an array of a reply is complete. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_WHOLE_HPP
#define HCY_CPP_WHOLE_HPP

#include <hcy/hcyclient.h>

#include <cstddef>
#include <hcy/cpp/shape.hpp>
#include <memory>
#include <string>

namespace hcyclient {

namespace detail {

struct Destroyer {
  void operator()(hcyArray* handle) const noexcept { hcyDestroyArray(handle); }
};

// Whether the imaginary parts are complete. A complex array that the program resized to no elements
// and back has lost them, but is not an incomplete reply: a copy of it is real.
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
  // Values that are neither double nor logical cannot be read, whether they arrived or not.
  return !hcyIsLogical(array) || hcyGetLogicals(array) != nullptr;
}

// Whether an array holds as many elements as its dimensions say, in constant time: the elements of
// a cell or struct array are checked when they are read.
inline bool isWhole(const hcyArray* array) {
  if (hcyGetNumberOfDimensions(array) == 0) return false;
  // Most arrays hold real numbers, full or sparse.
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

// Says what is missing in an incomplete array.
inline std::string lackOf(const hcyArray* array) {
  if (hcyGetNumberOfDimensions(array) == 0) return "its dimensions did not arrive";
  if (hcyIsSparse(array)) {
    return "its column starts, row indices and values do not describe a sparse array of " +
           shapeText(hcyGetDimensions(array), hcyGetNumberOfDimensions(array));
  }
  return "its dimensions require " + std::to_string(hcyGetNumberOfElements(array)) +
         " elements, but fewer arrived";
}

constexpr const char* limitMayHaveCut =
    "; the response size limit (Config::setResponseSizeLimit) may have cut the reply";

}  // namespace detail

}  // namespace hcyclient

#endif  // HCY_CPP_WHOLE_HPP
