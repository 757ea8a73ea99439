// SPDX-License-Identifier: Apache-2.0

#include "notations/array_json.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "notations/element_json.h"
#include "notations/element_types.h"
#include "notations/places.h"
#include "notations/sparse_entries.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using hcyclient::Span;

// Whether JSON has a number for it.
template <class T>
bool isPlain(T element) {
  if constexpr (std::is_floating_point_v<T>) return std::isfinite(element);
  return true;
}

// Whether nested lists can express this shape. Those of a 0-by-n array would lose n, and those of
// an m-by-0 array would be m lists without an element.
bool isNested(const Shape& shape) {
  return shape == Shape{0, 0} || (shape.size() == 2 && shape[0] > 0 && shape[1] > 0);
}

// Whether a single list can express this shape.
bool isRow(const Shape& shape) {
  return shape == Shape{0, 0} || (shape.size() == 2 && shape[0] == 1 && shape[1] > 0);
}

// A list of the rows, a row as a single list, or a single element.
template <class T>
void appendNested(std::string& out, Span<const T> elements, const Shape& shape) {
  if (shape == Shape{1, 1}) return appendElement(out, elements[0]);
  const bool isOneList = shape[0] == 1 && isRow(shape);
  if (!isOneList) out += '[';
  for (std::size_t i = 0; i < shape[0]; ++i) {
    out += i == 0 ? "[" : ",[";
    for (std::size_t j = 0; j < shape[1]; ++j) {
      if (j > 0) out += ',';
      appendElement(out, elements[i + j * shape[0]]);
    }
    out += ']';
  }
  if (!isOneList) out += ']';
}

template <class T>
void appendData(std::string& out, Span<const T> elements, const Array& array) {
  const Shape shape = shapeOf(array);
  if (isNested(shape)) return appendNested(out, elements, shape);
  out += '[';
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (i > 0) out += ',';
    appendElement(out, elements[i]);
  }
  out += ']';
}

// Ends a typed value.
void appendShape(std::string& out, const Shape& shape, bool isExplicit) {
  if (isExplicit) {
    out += ",\"$shape\":[";
    for (std::size_t i = 0; i < shape.size(); ++i) {
      if (i > 0) out += ',';
      out += std::to_string(shape[i]);
    }
    out += ']';
  }
  out += '}';
}

void openType(std::string& out, std::string_view type) {
  out.append("{\"$").append(type).append("\":");
}

template <class T>
void appendComplex(std::string& out, const Array& array) {
  const Shape shape = shapeOf(array);
  const bool isDouble = std::is_same_v<T, double>;
  if (!isDouble) openType(out, array.className());
  out += R"({"$complex":{"re":)";
  appendData(out, array.span<T>(), array);
  out += ",\"im\":";
  appendData(out, array.imaginary<T>(), array);
  out += '}';
  appendShape(out, shape, !isNested(shape));
  if (!isDouble) out += '}';
}

// Double and logical arrays need no class if nested lists express them.
template <class T>
void appendFull(std::string& out, const Array& array) {
  const Shape shape = shapeOf(array);
  if constexpr (isNumber<T>) {
    if (array.imaginary<T>().size() > 0) return appendComplex<T>(out, array);
  }
  const Span<const T> elements = array.span<T>();
  const bool isExplicit = !isNested(shape) ||
                          !(std::is_same_v<T, double> || std::is_same_v<T, bool>) ||
                          (std::is_same_v<T, bool> && elements.empty()) ||
                          !std::all_of(elements.begin(), elements.end(), isPlain<T>);
  if (!isExplicit) return appendData(out, elements, array);
  openType(out, array.className());
  appendData(out, elements, array);
  appendShape(out, shape, !isNested(shape));
}

// The rows of a matrix as strings; nothing if a row ends within a pair of surrogates.
std::optional<std::string> quotedRows(Span<const char16_t> units, const Shape& shape) {
  std::string rows;
  for (std::size_t i = 0; i < shape[0]; ++i) {
    std::u16string row;
    for (std::size_t j = 0; j < shape[1]; ++j) row += units[i + j * shape[0]];
    const auto text = quotedJson(row);
    if (!text) return std::nullopt;
    rows += (i == 0 ? "[" : ",") + *text;
  }
  return rows += ']';
}

void appendChar(std::string& out, const Array& array) {
  const Shape shape = shapeOf(array);
  const Span<const char16_t> units = array.span<char16_t>();
  const bool isMatrix = isNested(shape) && !isRow(shape);
  const auto text = isMatrix ? quotedRows(units, shape)
                             : quotedJson(std::u16string_view(units.data(), units.size()));
  if (!text) return appendFull<char16_t>(out, array);
  if (isRow(shape)) {
    out += *text;
    return;
  }
  openType(out, "char");
  out += *text;
  appendShape(out, shape, !isMatrix);
}

template <class T>
void appendSparse(std::string& out, const Array& array) {
  bool isFirst = true;
  const auto entries = entriesOf<T>(array);
  // The entries show the class, if there are any.
  const bool isExplicit = !std::is_same_v<T, double> && entries.empty();
  if (isExplicit) openType(out, std::is_same_v<T, bool> ? "logical" : "complex");
  out += R"({"$sparse":{"rows":)" + std::to_string(array.rows()) +
         ",\"cols\":" + std::to_string(array.columns()) + ",\"entries\":[";
  for (const auto& entry : entries) {
    out += std::exchange(isFirst, false) ? "[" : ",[";
    out += std::to_string(entry.row) + "," + std::to_string(entry.column) + ",";
    if constexpr (std::is_same_v<T, std::complex<double>>) {
      appendElement(out, entry.value.real());
      out += ',';
      appendElement(out, entry.value.imag());
    } else {
      appendElement<T>(out, entry.value);
    }
    out += ']';
  }
  out += isExplicit ? "]}}}" : "]}}";
}

void appendValue(std::string& out, const Array& array);

// The kind of a value in JSON. A list of different kinds is a cell.
enum class Look { kNumber, kTruth, kText, kList, kObject, kTyped };

Look lookOf(std::string_view json) {
  switch (json.front()) {
    case '"':
      return Look::kText;
    case '[':
      return Look::kList;
    case '{':
      return json.starts_with("{\"$") ? Look::kTyped : Look::kObject;
    case 't':
    case 'f':
      return Look::kTruth;
    default:
      return Look::kNumber;
  }
}

void appendCell(std::string& out, const Array& array) {
  const Shape shape = shapeOf(array);
  const std::size_t start = out.size();
  bool isMixed = false;
  Look first{};
  out += '[';
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (i > 0) out += ',';
    const std::size_t elementStart = out.size();
    appendValue(out, array[i]);
    const Look look = lookOf(std::string_view(out).substr(elementStart));
    if (i == 0) first = look;
    isMixed = isMixed || look != first || look == Look::kText || look == Look::kTyped;
  }
  out += ']';
  if (isRow(shape) && isMixed) return;
  out.insert(start, "{\"$cell\":");
  appendShape(out, shape, !isRow(shape));
}

std::vector<std::string> quotedNames(const std::vector<std::string>& names) {
  std::vector<std::string> sorted = names;
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
    throw hcyclient::UsageError("two fields of a struct have the same name");
  }
  std::vector<std::string> all;
  for (const std::string& name : names) {
    const auto text = quotedJson(name);
    if (!text) throw hcyclient::UsageError("a field name is not valid UTF-8");
    all.push_back(*text);
  }
  return all;
}

void appendStruct(std::string& out, const Array& array) {
  const Shape shape = shapeOf(array);
  const std::vector<std::string> names = array.fieldNames();
  const std::vector<std::string> shown = quotedNames(names);
  // Of elements without fields, only the number is written, as the shape.
  const bool isShapeAlone = names.empty() && array.size() > 1;
  const bool isExplicit = !isRow(shape) || array.size() == 0 || isShapeAlone ||
                          std::any_of(names.begin(), names.end(),
                                      [](const auto& name) { return name.starts_with('$'); });
  const bool isAlone = !isExplicit && shape[1] == 1;
  if (isExplicit) openType(out, "struct");
  if (!isAlone) out += '[';
  for (std::size_t i = 0; i < array.size() && !isShapeAlone; ++i) {
    out += i == 0 ? "{" : ",{";
    for (std::size_t field = 0; field < names.size(); ++field) {
      if (field > 0) out += ',';
      out += shown[field] + ":";
      appendValue(out, array(i, names[field]));
    }
    out += '}';
  }
  if (!isAlone) out += ']';
  if (!isExplicit) return;
  if (array.size() == 0 && !names.empty()) {
    for (std::size_t field = 0; field < names.size(); ++field) {
      out += (field == 0 ? ",\"$fields\":[" : ",") + shown[field];
    }
    out += ']';
  }
  if (isShapeAlone) out += ",\"$fields\":[]";
  appendShape(out, shape, !isRow(shape) || isShapeAlone);
}

void appendValue(std::string& out, const Array& array) {
  if (array.isCell()) return appendCell(out, array);
  if (array.isStruct()) return appendStruct(out, array);
  if (array.isSparse()) {
    if (array.is<bool>()) return appendSparse<bool>(out, array);
    return array.isComplex() ? appendSparse<std::complex<double>>(out, array)
                             : appendSparse<double>(out, array);
  }
  if (array.isText()) return appendChar(out, array);
  withElementType(array.classId(),
                  [&](auto type) { appendFull<typename decltype(type)::type>(out, array); });
}

}  // namespace

std::string toJson(const hcyclient::Array& array) {
  std::string out;
  appendValue(out, array);
  return out;
}

}  // namespace hcy::tools
