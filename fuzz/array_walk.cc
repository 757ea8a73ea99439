// SPDX-License-Identifier: Apache-2.0

#include "array_walk.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>

#include "handle.h"

namespace hcy::fuzz {
namespace {

// Resizing to dimensions that a server made up may need more memory than there is.
constexpr std::size_t mostElementsToAskFor = 1U << 16;
constexpr std::size_t mostElementsToChange = 1U << 10;
constexpr std::size_t mostElementsToVisit = 8;

volatile std::uint8_t sink;

void read(const void* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) sink = static_cast<const std::uint8_t*>(data)[i];
}

void readOne(const void* data, std::size_t size) {
  if (data != nullptr) read(data, size);
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

void readData(const hcyArray* array) {
  const std::size_t size = hcyGetElementSize(array);
  for (const void* data :
       {static_cast<const void*>(hcyGetPr(array)), static_cast<const void*>(hcyGetPi(array)),
        static_cast<const void*>(hcyGetData(array)),
        static_cast<const void*>(hcyGetImagData(array)),
        static_cast<const void*>(hcyGetLogicals(array)),
        static_cast<const void*>(hcyGetChars(array))}) {
    readOne(data, size);
  }
  sink = static_cast<std::uint8_t>(std::isfinite(hcyGetScalar(array)));
  readOne(hcyGetJc(array), sizeof(std::size_t));
  if (hcyIsSparse(array)) read(hcyGetIr(array), hcyGetNzmax(array) * sizeof(std::size_t));
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

void readElements(const hcyArray* array, int levels) {
  const auto visit = [levels](const Handle& element) {
    if (element) readEverything(element.get(), levels - 1);
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
  if (levels > 0) readElements(array, levels);
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
