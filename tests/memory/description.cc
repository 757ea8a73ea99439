// SPDX-License-Identifier: Apache-2.0

#include "memory/description.h"

#include <algorithm>
#include <sstream>

#include "abi/array_kinds.h"

namespace hcy::abi {
namespace {

void printSizes(std::ostream& out, const char* name, const std::size_t* sizes, std::size_t count) {
  out << ' ' << name;
  if (sizes == nullptr) return;
  for (std::size_t i = 0; i < count; ++i) out << ' ' << sizes[i];
}

// How many elements lie behind the data pointer: an array of a reply may hold none.
void printElements(std::ostream& out, const hcyArray* array, const void* data) {
  if (data == nullptr) return;
  const ClassFacts& facts = classFacts[hcyGetClassID(array)];
  for (std::size_t i = 0; i < storedCount(array); ++i) out << ' ' << facts.read(data, i);
}

void printContainer(std::ostream& out, const hcyArray* array) {
  const int fields = hcyGetNumberOfFields(array);
  for (int n = 0; n < fields; ++n) out << ' ' << hcyGetFieldNameByNumber(array, n);
  for (std::size_t i = 0; i < hcyGetNumberOfElements(array); ++i) {
    if (hcyIsCell(array)) out << " {" << describe(Array(hcyGetCell(array, i))) << '}';
    for (int n = 0; n < fields; ++n) {
      out << " {" << describe(Array(hcyGetFieldByNumber(array, i, n))) << '}';
    }
  }
}

}  // namespace

std::string describe(const hcyArray* array) {
  if (array == nullptr) return "none";
  std::ostringstream out;
  out << (hcyIsSparse(array) ? "sparse " : "") << hcyGetClassName(array)
      << (hcyIsComplex(array) ? " complex" : "");
  printSizes(out, "of", hcyGetDimensions(array), hcyGetNumberOfDimensions(array));
  if (hcyIsCell(array) || hcyIsStruct(array)) {
    printContainer(out, array);
    return out.str();
  }
  if (hcyIsSparse(array)) {
    printSizes(out, "rows", hcyGetIr(array), hcyGetNzmax(array));
    printSizes(out, "starts", hcyGetJc(array), hcyGetN(array) + 1);
  }
  out << " holds";
  printElements(out, array, dataOf(array));
  out << " and";
  printElements(out, array, hcyGetImagData(array));
  return out.str();
}

}  // namespace hcy::abi
