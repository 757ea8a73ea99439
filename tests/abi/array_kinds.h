// SPDX-License-Identifier: Apache-2.0
//
// Every kind of array that can be created: the 14 full classes and the two sparse kinds.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "abi/class_facts.h"
#include "abi/owned_array.h"

namespace hcy::abi {

struct ArrayKind {
  hcyClassID id;
  bool isSparse = false;

  const ClassFacts& facts() const { return classFacts[id]; }
  bool isContainer() const { return facts().storage == ElementStorage::Arrays; }
  bool isNumeric() const { return facts().isNumeric; }
  std::string name() const { return (isSparse ? "SPARSE_" : "") + std::string(facts().identifier); }
};

inline std::ostream& operator<<(std::ostream& out, const ArrayKind& kind) {
  return out << kind.name();
}

inline std::string kindName(const testing::TestParamInfo<ArrayKind>& info) {
  return info.param.name();
}

template <class Condition>
std::vector<ArrayKind> kindsThat(Condition condition) {
  std::vector<ArrayKind> kinds;
  for (hcyClassID id = 0; id < classCount; ++id) kinds.push_back({id});
  kinds.push_back({hcyDOUBLE_CLASS, true});
  kinds.push_back({hcyLOGICAL_CLASS, true});
  std::erase_if(kinds, [&](const ArrayKind& kind) { return !condition(kind); });
  return kinds;
}

inline std::vector<ArrayKind> allKinds() {
  return kindsThat([](const ArrayKind&) { return true; });
}
inline std::vector<ArrayKind> fullKinds() {
  return kindsThat([](const ArrayKind& kind) { return !kind.isSparse; });
}
inline std::vector<ArrayKind> sparseKinds() {
  return kindsThat([](const ArrayKind& kind) { return kind.isSparse; });
}
inline std::vector<ArrayKind> numericKinds() {
  return kindsThat([](const ArrayKind& kind) { return kind.isNumeric(); });
}
inline std::vector<ArrayKind> fullNumericKinds() {
  return kindsThat([](const ArrayKind& kind) { return kind.isNumeric() && !kind.isSparse; });
}

using Shape = std::vector<std::size_t>;

// The fields of every struct array that these functions create.
inline constexpr const char* fieldNames[] = {"first", "second"};
inline constexpr int fieldCount = 2;

// A new array of a full kind.
inline hcyArray* createArray(const ArrayKind& kind, const Shape& shape,
                             hcyComplexity complexity = hcyREAL) {
  const std::size_t* const dims = shape.data();
  if (kind.isNumeric()) return hcyCreateNumericArray(shape.size(), dims, kind.id, complexity);
  if (kind.id == hcyLOGICAL_CLASS) return hcyCreateLogicalArray(shape.size(), dims);
  if (kind.id == hcyCHAR_CLASS) return hcyCreateCharArray(shape.size(), dims);
  if (kind.id == hcyCELL_CLASS) return hcyCreateCellArray(shape.size(), dims);
  return hcyCreateStructArray(shape.size(), dims, fieldCount, fieldNames);
}

// A new matrix of any kind; a sparse one has room for all its elements.
inline hcyArray* createMatrix(const ArrayKind& kind, std::size_t m, std::size_t n,
                              hcyComplexity complexity = hcyREAL) {
  if (!kind.isSparse) return createArray(kind, {m, n}, complexity);
  if (kind.id == hcyDOUBLE_CLASS) return hcyCreateSparse(m, n, m * n, complexity);
  return hcyCreateSparseLogicalMatrix(m, n, m * n);
}

// The pointer to the real elements, by the getter that serves the class.
inline void* dataOf(const hcyArray* array) {
  if (hcyIsLogical(array)) return hcyGetLogicals(array);
  if (hcyIsChar(array)) return hcyGetChars(array);
  return hcyGetData(array);
}

inline std::size_t storedCount(const hcyArray* array) {
  return hcyIsSparse(array) ? hcyGetNzmax(array) : hcyGetNumberOfElements(array);
}

inline Shape shapeOf(const hcyArray* array) {
  const std::size_t* const dims = hcyGetDimensions(array);
  return {dims, dims + hcyGetNumberOfDimensions(array)};
}

// Writes an element; in a container, a double scalar into the cell or into every field.
inline void setValue(hcyArray* array, std::size_t index, double value) {
  if (hcyIsCell(array)) {
    hcySetCell(array, index, Array(hcyCreateDoubleScalar(value)));
  } else if (hcyIsStruct(array)) {
    for (int n = 0; n < hcyGetNumberOfFields(array); ++n) {
      hcySetFieldByNumber(array, index, n, Array(hcyCreateDoubleScalar(value)));
    }
  } else {
    classFacts[hcyGetClassID(array)].write(dataOf(array), index, value);
  }
}

// Reads an element as setValue() writes it; NaN when it is missing or its fields differ.
inline double valueAt(const hcyArray* array, std::size_t index) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  if (hcyIsCell(array)) {
    const Array element = hcyGetCell(array, index);
    return element ? hcyGetScalar(element) : none;
  }
  if (hcyIsStruct(array)) {
    const Array first = hcyGetFieldByNumber(array, index, 0);
    const Array second = hcyGetFieldByNumber(array, index, 1);
    if (!first || !second || hcyGetScalar(first) != hcyGetScalar(second)) return none;
    return hcyGetScalar(first);
  }
  return classFacts[hcyGetClassID(array)].read(dataOf(array), index);
}

inline std::vector<double> valuesOf(const hcyArray* array) {
  std::vector<double> values(storedCount(array));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = valueAt(array, i);
  return values;
}

// What fill() writes: 1, 2, 3 and so on; true and false in turn.
inline std::vector<double> filling(const ArrayKind& kind, std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    values[i] =
        kind.id == hcyLOGICAL_CLASS ? static_cast<double>((i + 1) % 2) : static_cast<double>(i + 1);
  }
  return values;
}

inline void fill(const ArrayKind& kind, hcyArray* array) {
  const std::vector<double> values = filling(kind, storedCount(array));
  for (std::size_t i = 0; i < values.size(); ++i) setValue(array, i, values[i]);
}

// A matrix of 1, 2, 3 and so on.
inline Array filledMatrix(const ArrayKind& kind, std::size_t m, std::size_t n) {
  Array array = createMatrix(kind, m, n);
  fill(kind, array);
  return array;
}

// A cell array that holds the value in its one element.
inline Array cellWith(hcyArray* value) {
  Array cell = hcyCreateCellMatrix(1, 1);
  hcySetCell(cell, 0, value);
  return cell;
}

// The imaginary parts of a numeric array, written and read like the real ones.
inline void setImaginary(hcyArray* array, std::size_t index, double value) {
  classFacts[hcyGetClassID(array)].write(hcyGetImagData(array), index, value);
}
inline double imaginaryAt(const hcyArray* array, std::size_t index) {
  return classFacts[hcyGetClassID(array)].read(hcyGetImagData(array), index);
}
inline std::vector<double> imaginaryOf(const hcyArray* array) {
  std::vector<double> values(hcyGetImagData(array) == nullptr ? 0 : storedCount(array));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = imaginaryAt(array, i);
  return values;
}

// A complex matrix of 1, 2, 3 and so on, with imaginary parts 11, 12, 13 and so on.
inline Array filledComplexMatrix(const ArrayKind& kind, std::size_t m, std::size_t n) {
  Array array = createMatrix(kind, m, n, hcyCOMPLEX);
  fill(kind, array);
  for (std::size_t i = 0; i < storedCount(array); ++i) {
    setImaginary(array, i, 11.0 + static_cast<double>(i));
  }
  return array;
}

}  // namespace hcy::abi
