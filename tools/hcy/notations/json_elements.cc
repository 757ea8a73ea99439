// SPDX-License-Identifier: Apache-2.0

#include "notations/json_elements.h"

#include <utility>

namespace hcy::tools {
namespace {

// The lengths of the lists, level by level, along the first elements.
Shape lengthsOf(const JsonValue& data) {
  Shape lengths;
  for (const JsonValue* value = &data; const auto* const list = value->as<JsonList>();) {
    lengths.push_back(list->size());
    if (list->empty()) break;
    value = &list->front();
  }
  return lengths;
}

// Appends the values in the order in which they are written. Refuses lists of other lengths.
void collect(const JsonValue& data, const Shape& lengths, std::size_t level,
             std::vector<const JsonValue*>& values) {
  const auto* const list = data.as<JsonList>();
  if (level == lengths.size()) {
    if (list != nullptr)
      throw BadText(data.offset, "expected a single value, like the first element, but got a list");
    values.push_back(&data);
    return;
  }
  if (list == nullptr)
    throw BadText(data.offset, "expected a list, like the first element, but got a single value");
  if (list->size() != lengths[level]) {
    throw BadText(data.offset, "this list has " + std::to_string(list->size()) +
                                   (list->size() == 1 ? " element" : " elements") +
                                   ", but the lists before it have " +
                                   std::to_string(lengths[level]));
  }
  for (const JsonValue& item : *list) collect(item, lengths, level + 1, values);
}

// From row-major order, in which the last dimension varies fastest, to column-major order.
std::vector<const JsonValue*> columnMajor(const std::vector<const JsonValue*>& rowMajor,
                                          const Shape& shape) {
  std::vector<const JsonValue*> values(rowMajor.size());
  Shape subscripts(shape.size());
  for (const JsonValue* const value : rowMajor) {
    std::size_t index = 0;
    for (std::size_t i = shape.size(); i-- > 0;) index = index * shape[i] + subscripts[i];
    values[index] = value;
    for (std::size_t i = shape.size(); i-- > 0 && ++subscripts[i] == shape[i];) subscripts[i] = 0;
  }
  return values;
}

}  // namespace

std::size_t sizeFrom(const JsonValue& value, std::uint64_t largest) {
  const auto* const number = value.as<JsonNumber>();
  if (number == nullptr) throw BadText(value.offset, "expected a number");
  return detail::numberFrom<std::uint64_t>(value, number->token, largest);
}

Shape shapeFrom(const JsonValue& value) {
  const auto* const list = value.as<JsonList>();
  if (list == nullptr || list->size() < 2) {
    throw BadText(value.offset, "$shape must be a list of at least two dimensions");
  }
  Shape shape;
  for (const JsonValue& dimension : *list) shape.push_back(sizeFrom(dimension));
  return shape;
}

Elements nestedElements(const JsonValue& data) {
  Shape shape = lengthsOf(data);
  std::vector<const JsonValue*> values;
  collect(data, shape, 0, values);
  if (shape.empty()) shape = {1};
  if (shape == Shape{0}) return {{0, 0}, {}};
  if (shape.size() == 1) return {{1, shape[0]}, std::move(values)};
  return {shape, columnMajor(values, shape)};
}

Elements flatElements(const JsonValue& data, const JsonValue& shape) {
  Elements elements{shapeFrom(shape), {}};
  const auto* const list = data.as<JsonList>();
  if (list == nullptr) {
    throw BadText(data.offset, "with $shape, the data must be a single list of all elements");
  }
  requireCount(data, list->size(), elements.shape);
  elements.values.reserve(list->size());
  for (const JsonValue& item : *list) elements.values.push_back(&item);
  return elements;
}

void requireCount(const JsonValue& data, std::size_t count, const Shape& shape) {
  std::uint64_t wanted = 1;
  bool isTooLarge = false;
  bool isEmpty = false;
  for (const std::uint64_t dimension : shape) {
    isEmpty = isEmpty || dimension == 0;
    isTooLarge = isTooLarge || wanted * dimension > kLargestSize;
    if (!isTooLarge) wanted *= dimension;
  }
  if (isEmpty) wanted = 0;
  if (isTooLarge && !isEmpty)
    throw BadText(data.offset, "the shape has more elements than an array can have");
  if (count != wanted) {
    throw BadText(data.offset, "the shape needs " + std::to_string(wanted) +
                                   (wanted == 1 ? " element" : " elements") + ", but there " +
                                   (count == 1 ? "is " : "are ") + std::to_string(count));
  }
}

}  // namespace hcy::tools
