// SPDX-License-Identifier: Apache-2.0

#include "array_walk.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>

#include "handle.h"
#include "require.h"

namespace hcy::fuzz {
namespace {

// Resizing to dimensions that a server made up may need more memory than there is.
constexpr std::size_t mostElementsToAskFor = 1U << 16;
constexpr std::size_t mostElementsToChange = 1U << 10;
constexpr std::size_t mostElementsToVisit = 3;
// The most elements that the library holds.
constexpr std::size_t largestCount = 2147483647;

volatile std::uint8_t sink;

// A sanitizer checks whole blocks that are copied.
void read(const void* data, std::size_t size) {
  std::array<std::uint8_t, 4096> block;
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  for (std::size_t left = size; data != nullptr && left != 0;) {
    const std::size_t count = std::min(left, block.size());
    std::memcpy(block.data(), bytes, count);
    sink = block[count - 1];
    bytes += count;
    left -= count;
  }
}

void readClass(const hcyArray* array) {
  using Predicate = bool (*)(const hcyArray*);
  for (const Predicate is :
       {hcyIsUint8,   hcyIsInt8,    hcyIsUint16, hcyIsInt16,         hcyIsUint32,
        hcyIsInt32,   hcyIsUint64,  hcyIsInt64,  hcyIsSingle,        hcyIsChar,
        hcyIsStruct,  hcyIsCell,    hcyIsSparse, hcyIsDouble,        hcyIsLogical,
        hcyIsNumeric, hcyIsComplex, hcyIsEmpty,  hcyIsLogicalScalar, hcyIsLogicalScalarTrue}) {
    sink = is(array);
  }
  sink = hcyIsClass(array, "double");
  sink = hcyIsClass(array, hcyGetClassName(array));
  sink = static_cast<std::uint8_t>(hcyGetClassID(array));
}

void readShape(const hcyArray* array) {
  sink = static_cast<std::uint8_t>(hcyGetM(array) + hcyGetN(array));
  sink = static_cast<std::uint8_t>(hcyGetNumberOfElements(array));
  read(hcyGetDimensions(array), hcyGetNumberOfDimensions(array) * sizeof(std::size_t));
  const std::array<std::size_t, 4> subscripts{1, 2, 3, 4};
  sink = static_cast<std::uint8_t>(
      hcyCalcSingleSubscript(array, subscripts.size(), subscripts.data()));
}

// Where an index leads outside, the program has put it there.
void requireMatrix(const hcyArray* array) {
  const std::size_t* const starts = hcyGetJc(array);
  const std::size_t* const rows = hcyGetIr(array);
  if (starts == nullptr) {
    HCY_REQUIRE(rows == nullptr && hcyGetNzmax(array) == 0);
    return;
  }
  const std::size_t columns = hcyGetN(array);
  HCY_REQUIRE(starts[0] == 0);
  HCY_REQUIRE(std::is_sorted(starts, starts + columns + 1));
  // The library hands out as many indices as values, unless it has no values to hand out.
  const bool hasValues = hcyGetData(array) != nullptr || hcyGetLogicals(array) != nullptr;
  HCY_REQUIRE(!hasValues || starts[columns] <= hcyGetNzmax(array));
  for (std::size_t i = 0; i < starts[columns]; ++i) HCY_REQUIRE(rows[i] < hcyGetM(array));
}

// All elements behind all pointers.
void readData(const hcyArray* array) {
  const bool isSparse = hcyIsSparse(array);
  const std::size_t count = isSparse ? hcyGetNzmax(array) : hcyGetNumberOfElements(array);
  for (const void* data :
       {static_cast<const void*>(hcyGetPr(array)), static_cast<const void*>(hcyGetPi(array)),
        static_cast<const void*>(hcyGetData(array)),
        static_cast<const void*>(hcyGetImagData(array)),
        static_cast<const void*>(hcyGetLogicals(array)),
        static_cast<const void*>(hcyGetChars(array))}) {
    read(data, count * hcyGetElementSize(array));
  }
  sink = static_cast<std::uint8_t>(std::isfinite(hcyGetScalar(array)));
  if (!isSparse) return;
  read(hcyGetIr(array), count * sizeof(std::size_t));
  // A program may set more columns than there can be starts for.
  const std::size_t columns = hcyGetN(array);
  if (columns < largestCount) read(hcyGetJc(array), (columns + 1) * sizeof(std::size_t));
}

void readText(const hcyArray* array) {
  char* const text = hcyArrayToString(array);
  if (text != nullptr) read(text, std::strlen(text));
  hcyFree(text);
  std::array<char, 64> buffer{};
  for (const std::size_t length : {std::size_t{0}, std::size_t{1}, buffer.size()}) {
    sink = static_cast<std::uint8_t>(hcyGetString(array, buffer.data(), length));
  }
}

// The first elements, and one behind the last.
template <class Visit>
void forSomeElements(const hcyArray* array, Visit visit) {
  const std::size_t count = hcyGetNumberOfElements(array);
  for (std::size_t i = 0; i < std::min(count, mostElementsToVisit); ++i) visit(i);
  visit(count);
  if (count != 0) visit(count - 1);
}

template <class Visit>
void forElements(const hcyArray* array, Visit visitElement) {
  const auto visit = [&](const Handle& element) {
    if (element) visitElement(element.get());
  };
  forSomeElements(array, [&](std::size_t i) { visit(Handle(hcyGetCell(array, i))); });
  const int fields = std::min(hcyGetNumberOfFields(array), 4);
  for (int field = -1; field <= fields; ++field) {
    const char* const name = hcyGetFieldNameByNumber(array, field);
    if (name != nullptr) sink = static_cast<std::uint8_t>(hcyGetFieldNumber(array, name));
    forSomeElements(array, [&](std::size_t i) {
      visit(Handle(hcyGetField(array, i, name)));
      visit(Handle(hcyGetFieldByNumber(array, i, field)));
    });
  }
}

void changeElements(hcyArray* array) {
  const Handle value(hcyCreateDoubleScalar(1.5));
  forSomeElements(array, [&](std::size_t i) {
    hcySetCell(array, i, value.get());
    hcySetFieldByNumber(array, i, 0, value.get());
  });
  // Each time the array holds itself once more, as it was.
  hcySetCell(array, 0, array);
  hcySetField(array, 0, "a", array);
}

void changeFields(hcyArray* array) {
  hcyRemoveField(array, hcyGetNumberOfFields(array) - 1);
  hcyRemoveField(array, 0);
  const int added = hcyAddField(array, "added");
  hcySetFieldByNumber(array, 0, added, array);
}

void changeShape(hcyArray* array) {
  for (const auto set : {hcySetM, hcySetN}) {
    try {
      set(array, SIZE_MAX);
    } catch (const std::exception&) {
      sink = 0;  // most arrays cannot be that large
    }
  }
  const std::array<std::size_t, 3> dims{2, 3, 1};
  sink = static_cast<std::uint8_t>(hcySetDimensions(array, dims.data(), 0));
  sink = static_cast<std::uint8_t>(hcySetDimensions(array, dims.data(), dims.size()));
  if (hcyGetNumberOfElements(array) > mostElementsToAskFor) return;
  hcySetNzmax(array, hcyGetNumberOfElements(array));
  hcySetM(array, 4);
  hcySetN(array, 1);
}

}  // namespace

void readEverything(const hcyArray* array, int levels) {
  readClass(array);
  readShape(array);
  readData(array);
  readText(array);
  if (levels == 0) return;
  forElements(array, [&](const hcyArray* element) { readEverything(element, levels - 1); });
}

void requireMatrices(const hcyArray* array, int levels) {
  if (hcyIsSparse(array)) requireMatrix(array);
  if (levels == 0) return;
  forElements(array, [&](const hcyArray* element) { requireMatrices(element, levels - 1); });
}

void changeEverything(hcyArray* array) {
  // Each change writes all elements of the array; where there are many it takes too long.
  if (hcyGetNumberOfElements(array) <= mostElementsToChange) {
    changeElements(array);
    changeFields(array);
    changeElements(array);
  }
  sink = static_cast<std::uint8_t>(hcyAddField(array, "last"));
  changeShape(array);
  changeElements(array);
}

}  // namespace hcy::fuzz
