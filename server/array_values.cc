// SPDX-License-Identifier: Apache-2.0

#include "array_values.h"

#include <algorithm>
#include <limits>

#include "function_error.h"
#include "wire/protobuf_version.h"

namespace hcy::server {
namespace {

using client::VORTEN_Array;

constexpr std::uint32_t kLastCodeUnit = 0xFFFF;
constexpr std::uint32_t kReplacement = 0xFFFD;

void requireCount(int held, std::uint64_t expected, const std::string& name) {
  if (static_cast<std::uint64_t>(held) == expected) return;
  throw FunctionError(kArgumentSize, name + " holds " + std::to_string(held) +
                                         " elements, but its dimensions tell " +
                                         std::to_string(expected) + ".");
}

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void appendUtf8(std::string& text, std::uint32_t codePoint) {
  const auto append = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (codePoint < 0x80) {
    append(codePoint);
  } else if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
    append(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    append(0xE0 | codePoint >> 12);
    append(0x80 | (codePoint >> 6 & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  } else {
    append(0xF0 | codePoint >> 18);
    append(0x80 | (codePoint >> 12 & 0x3F));
    append(0x80 | (codePoint >> 6 & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  }
}

}  // namespace

std::string describeShape(const std::vector<std::uint64_t>& shape) {
  std::string text;
  for (const std::uint64_t extent : shape) {
    text += (text.empty() ? "" : "-by-") + std::to_string(extent);
  }
  return text;
}

std::vector<std::uint64_t> shapeOf(const Array& array, const std::string& name) {
  if (array.dimension_size() < 2) {
    throw FunctionError(kArgumentSize, name + " has fewer than two dimensions.");
  }
  std::vector<std::uint64_t> shape(array.dimension().begin(), array.dimension().end());
  while (shape.size() > 2 && shape.back() == 1) shape.pop_back();
  return shape;
}

std::uint64_t elementCount(const std::vector<std::uint64_t>& shape, const std::string& name) {
  // A zero makes the product zero, whatever the others are.
  if (std::ranges::find(shape, 0U) != shape.end()) return 0;
  std::uint64_t count = 1;
  for (const std::uint64_t extent : shape) {
    if (extent > std::numeric_limits<std::uint64_t>::max() / count) {
      throw FunctionError(kArgumentSize,
                          name + " is " + describeShape(shape) + ", more than can be counted.");
    }
    count *= extent;
  }
  return count;
}

void requireClass(const Array& array, VORTEN_Array::QXType type, const std::string& name) {
  if (array.type() != type) {
    const std::string& held = VORTEN_Array::QXType_Name(array.type());
    throw FunctionError(kArgumentClass, name + " is of class " + (held.empty() ? "unknown" : held) +
                                            ", not " + VORTEN_Array::QXType_Name(type) + ".");
  }
  if (array.memorylayout() != VORTEN_Array::COLUMN_MAJOR) {
    throw FunctionError(kArgumentValue, name + " is not column-major.");
  }
}

DoubleElements doubleElements(Array& array, const std::string& name) {
  requireClass(array, VORTEN_Array::DOUBLE, name);
  const std::uint64_t count = elementCount(shapeOf(array, name), name);
  VORTEN_Array::Double& held = *array.mutable_qxdouble();
  requireCount(held.elements_size(), count, name);
  if (held.imag_elements_size() > 0) requireCount(held.imag_elements_size(), count, name);
  return {*held.mutable_elements(), *held.mutable_imag_elements()};
}

Doubles& realElements(Array& array, const std::string& name) {
  const DoubleElements elements = doubleElements(array, name);
  if (!elements.imaginary.empty()) throw FunctionError(kArgumentValue, name + " is complex.");
  return elements.real;
}

double realScalar(Array& array, const std::string& name) {
  const Doubles& elements = realElements(array, name);
  if (elements.size() != 1) throw FunctionError(kArgumentSize, name + " is no scalar.");
  return elements[0];
}

CodeUnits& codeUnits(Array& array, const std::string& name) {
  requireClass(array, VORTEN_Array::CHAR, name);
  CodeUnits& units = *array.mutable_qxchar()->mutable_elements();
  requireCount(units.size(), elementCount(shapeOf(array, name), name), name);
  if (std::ranges::any_of(units, [](std::uint32_t unit) { return unit > kLastCodeUnit; })) {
    throw FunctionError(kArgumentValue, name + " holds a character above 65535.");
  }
  return units;
}

CodeUnits& rowOfCodeUnits(Array& array, const char* name) {
  CodeUnits& units = codeUnits(array, name);
  const std::vector<std::uint64_t> shape = shapeOf(array, name);
  if (!units.empty() && (shape.size() != 2 || shape[0] != 1)) {
    throw FunctionError(kArgumentSize,
                        std::string(name) + " is " + describeShape(shape) + ", not one row.");
  }
  return units;
}

std::string utf8Text(Array& array, const char* name) {
  const CodeUnits& units = rowOfCodeUnits(array, name);
  std::string text;
  for (int i = 0; i < units.size(); ++i) {
    const std::uint32_t unit = units[i];
    if (isHighSurrogate(unit) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
      appendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00));
    } else {
      const bool lone = isHighSurrogate(unit) || isLowSurrogate(unit);
      appendUtf8(text, lone ? kReplacement : unit);
    }
  }
  return text;
}

void setDimensions(Array& array, std::initializer_list<std::size_t> dimensions) {
  for (const std::size_t extent : dimensions) array.add_dimension(extent);
}

Doubles& makeDoubles(Array& array, std::initializer_list<std::size_t> dimensions) {
  array.set_type(VORTEN_Array::DOUBLE);
  setDimensions(array, dimensions);
  const std::vector<std::uint64_t> shape(dimensions.begin(), dimensions.end());
  const std::uint64_t count = elementCount(shape, "The result");
  if (count > std::numeric_limits<int>::max() / sizeof(double)) {
    throw FunctionError(kResultSize, "The result is " + describeShape(shape) + ", too large.");
  }
  Doubles& elements = *array.mutable_qxdouble()->mutable_elements();
  resizeList(elements, static_cast<int>(count));
  return elements;
}

void makeScalar(Array& array, double value) { makeDoubles(array, {1, 1})[0] = value; }

}  // namespace hcy::server
