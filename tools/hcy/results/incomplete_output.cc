// SPDX-License-Identifier: Apache-2.0

#include "results/incomplete_output.h"

#include <cstddef>
#include <string>

#include "notations/places.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;

constexpr const char* kCause =
    "\nThe size limit for replies may have cut it off; --max-reply BYTES raises the limit.";

// An array: an output, or an element of a container, which has a place itself.
struct Place {
  const Array& array;
  const Place* container = nullptr;
  std::string name = {};  // of an output
  std::size_t index = 0;  // in the container
  int field = 0;          // if the container is a struct

  std::string text() const {
    if (container == nullptr) return name;
    const Array& outer = container->array;
    std::string text = container->text();
    if (outer.isCell() || outer.size() != 1) text += ", " + placeText(index, shapeOf(outer));
    if (outer.isCell()) return text;
    return text + ", " + printable(hcyGetFieldNameByNumber(outer.get(), field));
  }
};

[[noreturn]] void refuse(const Place& place, const std::string& problem) {
  throw IncompleteOutput(place.text() + " is incomplete: " + problem + "." + kCause);
}

[[noreturn]] void refuseElements(const Place& place, const std::string& problem) {
  const std::size_t count = place.array.size();
  refuse(place, "its dimensions call for " + std::to_string(count) +
                    (count == 1 ? " element, but " : " elements, but ") + problem);
}

void requireWhole(const Place& place);

void requireElement(const Place& container, Array element, std::size_t index, int field) {
  if (!element) refuseElements(container, "not all of them arrived");
  requireWhole(Place{element, &container, {}, index, field});
}

void requireWholeContainer(const Place& place) {
  hcyArray* const array = place.array.get();
  const bool isCell = place.array.isCell();
  const int fields = hcyGetNumberOfFields(array);
  // Elements without fields are only a number, which the server can make as large as it likes.
  if (!isCell && fields == 0) return;
  const std::size_t size = place.array.size();
  for (std::size_t i = 0; i < size; ++i) {
    if (isCell) requireElement(place, Array::adopt(hcyGetCell(array, i)), i, 0);
    for (int field = 0; field < fields; ++field) {
      requireElement(place, Array::adopt(hcyGetFieldByNumber(array, i, field)), i, field);
    }
  }
}

bool hasValues(const Array& array) {
  hcyArray* const handle = array.get();
  if (array.isText()) return hcyGetChars(handle) != nullptr;
  if (hcyIsLogical(handle)) return hcyGetLogicals(handle) != nullptr;
  return hcyGetData(handle) != nullptr && (!array.isComplex() || hcyGetImagData(handle) != nullptr);
}

void requireWholeSparse(const Place& place) {
  hcyArray* const array = place.array.get();
  const std::size_t* const starts = hcyGetJc(array);
  if (starts == nullptr) {
    refuseElements(place, "its sparse indices are missing or invalid");
  }
  if (starts[place.array.columns()] != 0 && !hasValues(place.array)) {
    refuseElements(place, "some of its sparse values are missing");
  }
}

void requireWhole(const Place& place) {
  const Array& array = place.array;
  if (hcyGetNumberOfDimensions(array.get()) == 0) refuse(place, "its dimensions did not arrive");
  if (array.isSparse()) return requireWholeSparse(place);
  if (array.isCell() || array.isStruct()) return requireWholeContainer(place);
  if (array.size() != 0 && !hasValues(array)) refuseElements(place, "not all of them arrived");
}

}  // namespace

void requireWhole(const std::vector<Array>& outputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    requireWhole(Place{outputs[i], nullptr, outputName(i, outputs.size())});
  }
}

}  // namespace hcy::tools
