// SPDX-License-Identifier: Apache-2.0

#include "arguments.h"

#include <algorithm>

#include "function_error.h"
#include "text/text.h"

namespace hcy::server {
namespace {

constexpr std::size_t kLargestSize = 2147483647;
constexpr char32_t kReplacement = 0xFFFD;

void requireClass(const Value& value, hcyClassID classId, const char* className,
                  const std::string& name) {
  const hcyArray* const array = value.array.get();
  if (array == nullptr || hcyGetClassID(array) != classId) {
    const std::string held = array == nullptr ? "unknown" : hcyGetClassName(array);
    throw FunctionError(kArgumentClass, name + " is of class " + held + ", not " + className + ".");
  }
  if (!value.isColumnMajor) throw FunctionError(kArgumentValue, name + " is not column-major.");
}

void requireFull(const Value& value, const std::string& name) {
  if (value.array.isSparse()) throw FunctionError(kArgumentClass, name + " is sparse.");
}

// The number of elements that the dimensions name, if it is one that an array can have.
std::size_t elementCount(const Shape& shape, const std::string& name) {
  std::size_t count = 1;
  for (const std::size_t extent : shape) {
    if (extent > kLargestSize) {
      throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", too large.");
    }
  }
  if (std::ranges::find(shape, 0U) != shape.end()) return 0;
  for (const std::size_t extent : shape) {
    if (extent > kLargestSize / count) {
      throw FunctionError(kArgumentSize,
                          name + " is " + describeShape(shape) + ", more than can be counted.");
    }
    count *= extent;
  }
  return count;
}

// The elements of an array of the class of T, if they have arrived.
template <class T>
Span<T> elements(Value& value, const std::string& name) try {
  elementCount(shapeOf(value, name), name);
  return value.array.span<T>();
} catch (const hcyclient::IncompleteReply& incomplete) {
  throw FunctionError(kArgumentSize, name + ": " + incomplete.what() + ".");
}

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

std::string describeShape(const Shape& shape) {
  std::string text;
  for (const std::size_t extent : shape) {
    text += (text.empty() ? "" : "-by-") + std::to_string(extent);
  }
  return text;
}

Shape shapeOf(const Value& value, const std::string& name) {
  Shape shape = value.array.shape();
  if (shape.size() < 2) {
    throw FunctionError(kArgumentSize, name + " has fewer than two dimensions.");
  }
  while (shape.size() > 2 && shape.back() == 1) shape.pop_back();
  return shape;
}

DoubleElements doubleElements(Value& value, const std::string& name) {
  requireClass(value, hcyDOUBLE_CLASS, "double", name);
  requireFull(value, name);
  const Span<double> real = elements<double>(value, name);
  return {real, value.array.imaginary<double>()};
}

double realScalar(Value& value, const std::string& name) {
  const DoubleElements elements = doubleElements(value, name);
  if (!elements.imaginary.empty()) throw FunctionError(kArgumentValue, name + " is complex.");
  if (elements.real.size() != 1) throw FunctionError(kArgumentSize, name + " is not a scalar.");
  return elements.real[0];
}

const Array& sparseArgument(const Value& value, const char* letter) try {
  const std::string name(letter);
  requireClass(value, hcyDOUBLE_CLASS, "double", name);
  if (!value.array.isSparse()) throw FunctionError(kArgumentClass, name + " is not sparse.");
  const Shape shape = shapeOf(value, name);
  if (shape.size() != 2) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", not a matrix.");
  }
  for (const std::size_t extent : shape) elementCount({extent, 1}, name);
  if (value.array.isComplex()) throw FunctionError(kArgumentValue, name + " is complex.");
  static_cast<void>(value.array.columnStarts());
  return value.array;
} catch (const hcyclient::IncompleteReply& incomplete) {
  throw FunctionError(kArgumentValue, std::string(letter) + ": " + incomplete.what() + ".");
}

std::u16string_view codeUnits(Value& value, const std::string& name) {
  requireClass(value, hcyCHAR_CLASS, "char", name);
  const Span<char16_t> units = elements<char16_t>(value, name);
  return {units.data(), units.size()};
}

std::u16string_view rowOfCodeUnits(Value& value, const std::string& name) {
  const std::u16string_view units = codeUnits(value, name);
  const Shape shape = shapeOf(value, name);
  if (!units.empty() && (shape.size() != 2 || shape[0] != 1)) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", not one row.");
  }
  return units;
}

std::string utf8Text(Value& value, const std::string& name) {
  const std::u16string_view units = rowOfCodeUnits(value, name);
  std::string text;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t codePoint = units[i];
    if (isHighSurrogate(codePoint) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (units[++i] - 0xDC00U);
    } else if (isHighSurrogate(codePoint) || isLowSurrogate(codePoint)) {
      codePoint = kReplacement;
    }
    tools::appendUtf8(text, codePoint);
  }
  return text;
}

}  // namespace hcy::server
