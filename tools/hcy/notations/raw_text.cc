// SPDX-License-Identifier: Apache-2.0

#include "notations/raw_text.h"

#include <cmath>

#include "notations/array_json.h"
#include "notations/element_json.h"
#include "notations/element_types.h"

namespace hcy::tools {
namespace {

std::string rowsOf(const Array& text) {
  const auto units = text.span<char16_t>();
  if (units.size() == 0) return "\n";
  const std::size_t rows = text.rows();
  std::string lines;
  for (std::size_t i = 0; i < rows; ++i) {
    std::u16string row;
    for (std::size_t k = i; k < units.size(); k += rows) row += units[k];
    lines += Array(row).toString() + "\n";
  }
  return lines;
}

template <class T>
std::string numberText(T number) {
  std::string text;
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number < 0 ? "-Infinity" : "Infinity";
  }
  appendElement(text, number);
  return text;
}

}  // namespace

std::string rawText(const hcyclient::Array& array) {
  const bool isFull = !array.isCell() && !array.isStruct() && !array.isSparse();
  if (array.isText() && array.shape().size() <= 2) {
    try {
      return rowsOf(array);
    } catch (const hcyclient::UsageError&) {
      // UTF-8 cannot express an unpaired surrogate.
      return toJson(array) + "\n";
    }
  }
  if (!isFull || array.isComplex() || array.isText() || array.size() != 1) {
    return toJson(array) + "\n";
  }
  return withElementType(array.classId(), [&](auto type) {
    using T = typename decltype(type)::type;
    return numberText(array.span<T>()[0]) + "\n";
  });
}

}  // namespace hcy::tools
