// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <vector>

#include "notations/json_array.h"
#include "notations/json_elements.h"
#include "notations/json_typed_value.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using Names = std::vector<std::string>;

void requireName(const std::string& name, std::size_t offset) {
  if (name.find('\0') != std::string::npos) {
    throw BadText(offset, "a field name cannot contain a NUL character");
  }
}

Names namesOf(const JsonObject& object) {
  Names names;
  for (const JsonMember& member : object) {
    requireName(member.name, member.offset);
    names.push_back(member.name);
  }
  return names;
}

Names namesIn(const JsonValue& fields) {
  const auto* const list = fields.as<JsonList>();
  if (list == nullptr) throw BadText(fields.offset, "$fields must be a list of field names");
  Names names;
  for (const JsonValue& item : *list) {
    const auto* const name = item.as<std::string>();
    if (name == nullptr) throw BadText(item.offset, "a field name must be a string");
    requireName(*name, item.offset);
    names.push_back(*name);
  }
  Names sorted = names;
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end()) {
    throw BadText(fields.offset, "$fields has the name " + printable(*twice) + " twice");
  }
  return names;
}

bool haveSameNames(const JsonObject& a, const JsonObject& b) {
  const auto isSame = [](const JsonMember& x, const JsonMember& y) { return x.name == y.name; };
  if (a.size() != b.size()) return false;
  if (std::equal(a.begin(), a.end(), b.begin(), isSame)) return true;
  std::vector<std::string_view> first;
  std::vector<std::string_view> second;
  for (const JsonMember& member : a) first.push_back(member.name);
  for (const JsonMember& member : b) second.push_back(member.name);
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  return first == second;
}

void setFields(Array& array, std::size_t i, const JsonObject& object) {
  for (const JsonMember& member : object) array(i, member.name) = arrayFrom(member.value);
}

// Throws BadText if an element is not an object with these names, in any order.
void requireNames(const JsonValue& value, const Names& sorted) {
  const auto* const object = value.as<JsonObject>();
  if (object == nullptr) throw BadText(value.offset, "an element of a struct must be an object");
  Names names = namesOf(*object);
  std::sort(names.begin(), names.end());
  if (names != sorted) {
    throw BadText(value.offset, "all elements of a struct must have the same fields");
  }
}

// One string for each row.
Array charMatrix(const JsonList& strings) {
  std::vector<Array> rows;
  for (const JsonValue& string : strings) rows.push_back(charArray(string, nullptr));
  Array matrix = Array::zeros<char16_t>(rows.size(), rows.front().size());
  const auto units = matrix.span<char16_t>();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto row = rows[i].span<char16_t>();
    if (row.size() * rows.size() != matrix.size()) {
      throw BadText(strings[i].offset, "all rows of a char matrix must have the same length");
    }
    for (std::size_t j = 0; j < row.size(); ++j) units[i + j * rows.size()] = row[j];
  }
  return matrix;
}

}  // namespace

bool areAlike(const JsonList& values) {
  const auto* const first = values.front().as<JsonObject>();
  return first != nullptr && !isTyped(*first) &&
         std::all_of(values.begin(), values.end(), [first](const JsonValue& value) {
           const auto* const object = value.as<JsonObject>();
           return object != nullptr && haveSameNames(*first, *object);
         });
}

Array charArray(const JsonValue& data, const JsonValue* shape) {
  if (const auto* const text = data.as<std::string>()) {
    Array array{*text};
    if (shape != nullptr) {
      const Shape wanted = shapeFrom(*shape);
      requireCount(data, array.size(), wanted);
      array.resize(wanted);
    }
    return array;
  }
  const auto* const list = data.as<JsonList>();
  const auto isText = [](const JsonValue& value) { return value.as<std::string>() != nullptr; };
  if (shape == nullptr && list != nullptr && !list->empty() &&
      std::all_of(list->begin(), list->end(), isText)) {
    return charMatrix(*list);
  }
  return arrayOf<char16_t>(elementsOf(data, shape));
}

Array cellArray(const JsonValue& data, const JsonValue* shape) {
  const auto* const list = data.as<JsonList>();
  if (list == nullptr) throw BadText(data.offset, "a cell must be a list");
  const std::size_t rows = list->empty() ? 0 : 1;
  const Shape wanted = shape == nullptr ? Shape{rows, list->size()} : shapeFrom(*shape);
  requireCount(data, list->size(), wanted);
  Array array = Array::cells(wanted);
  for (std::size_t i = 0; i < list->size(); ++i) array[i] = arrayFrom((*list)[i]);
  return array;
}

Array structArray(const JsonValue& data, const JsonValue* shape, const JsonValue* fields) {
  const auto* const list = data.as<JsonList>();
  if (list == nullptr) throw BadText(data.offset, "a struct must be a list of objects");
  const std::size_t rows = list->empty() ? 0 : 1;
  const Shape wanted = shape == nullptr ? Shape{rows, list->size()} : shapeFrom(*shape);
  Names names;
  if (fields != nullptr) {
    names = namesIn(*fields);
  } else if (!list->empty()) {
    const auto* const first = list->front().as<JsonObject>();
    if (first != nullptr) names = namesOf(*first);
  }
  // Elements without fields need not be written: the shape gives their number.
  const bool isShapeAlone = fields != nullptr && names.empty() && list->empty();
  if (!isShapeAlone) requireCount(data, list->size(), wanted);
  Names sorted = names;
  std::sort(sorted.begin(), sorted.end());
  for (const JsonValue& element : *list) requireNames(element, sorted);
  Array array = Array::structs(wanted, names);
  for (std::size_t i = 0; i < list->size(); ++i) setFields(array, i, *(*list)[i].as<JsonObject>());
  return array;
}

Array structScalar(const JsonValue& value) {
  const JsonObject& object = *value.as<JsonObject>();
  Array array = Array::structs({1, 1}, namesOf(object));
  setFields(array, 0, object);
  return array;
}

}  // namespace hcy::tools
