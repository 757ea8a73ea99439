// SPDX-License-Identifier: Apache-2.0

#include "notations/npy.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>

#include "notations/json_elements.h"
#include "notations/no_notation.h"
#include "notations/npy_header.h"
#include "text/source_text.h"

namespace hcy::tools {
namespace {

constexpr bool kIsBigEndian = std::endian::native == std::endian::big;

template <class T>
T valueAt(const char* bytes, bool isBigEndian) {
  std::array<char, sizeof(T)> copy{};
  std::memcpy(copy.data(), bytes, sizeof(T));
  if (isBigEndian != kIsBigEndian) std::reverse(copy.begin(), copy.end());
  return std::bit_cast<T>(copy);
}

// The number of elements. Throws BadInput if the file does not hold exactly that many.
std::size_t countOf(const NpyHeader& header, std::size_t bytes) {
  const std::size_t size = header.kind == 'U' ? 4 * header.itemSize : header.itemSize;
  const bool isEmpty =
      std::find(header.shape.begin(), header.shape.end(), 0U) != header.shape.end();
  std::size_t count = isEmpty ? 0 : 1;
  for (const std::size_t dimension : header.shape) {
    if (count > kLargestSize / std::max<std::size_t>(dimension, 1)) {
      throw BadInput("the .npy file has more elements than an array can have");
    }
    count *= dimension;
  }
  if (bytes / std::max<std::size_t>(size, 1) < count || bytes != count * size) {
    throw BadInput("the .npy file is damaged: its header calls for " + std::to_string(count) +
                   (count == 1 ? " element" : " elements") + " of " + std::to_string(size) +
                   (size == 1 ? " byte" : " bytes") + ", but it has " + std::to_string(bytes) +
                   (bytes == 1 ? " byte" : " bytes") + " of data");
  }
  return count;
}

// At least two dimensions; a vector is a column.
Shape arrayShape(Shape shape) {
  shape.resize(std::max<std::size_t>(shape.size(), 2), 1);
  return shape;
}

// Calls use(i, j) for element i in column-major order, which is element j of the file.
template <class Use>
void forEachElement(const NpyHeader& header, std::size_t count, Use use) {
  if (header.isByColumns) {
    for (std::size_t i = 0; i < count; ++i) use(i, i);
    return;
  }
  const Shape& shape = header.shape;
  std::vector<std::size_t> subscripts(shape.size());
  for (std::size_t j = 0; j < count; ++j) {
    std::size_t i = 0;
    for (std::size_t d = shape.size(); d-- > 0;) i = i * shape[d] + subscripts[d];
    use(i, j);
    for (std::size_t d = shape.size(); d-- > 0 && ++subscripts[d] == shape[d];) subscripts[d] = 0;
  }
}

template <class Stored, class T>
Array numbers(const NpyHeader& header, std::string_view data, std::size_t count) {
  Array array = Array::zeros<T>(arrayShape(header.shape));
  const auto span = array.span<T>();
  forEachElement(header, count, [&](std::size_t i, std::size_t j) {
    span[i] = static_cast<T>(valueAt<Stored>(data.data() + j * sizeof(Stored), header.isBigEndian));
  });
  return array;
}

// The number that a float16 holds: a sign, 5 bits of exponent and 10 of the fraction.
float valueOfHalf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 0x1F;
  const int fraction = bits & 0x3FF;
  float value = 0;
  if (exponent == 0x1F) {
    value = fraction == 0 ? std::numeric_limits<float>::infinity()
                          : std::numeric_limits<float>::quiet_NaN();
  } else if (exponent == 0) {
    value = std::ldexp(static_cast<float>(fraction), -24);
  } else {
    value = std::ldexp(static_cast<float>(fraction + 0x400), exponent - 25);
  }
  return std::copysign(value, (bits & 0x8000) != 0 ? -1.0F : 1.0F);
}

Array halfNumbers(const NpyHeader& header, std::string_view data, std::size_t count) {
  Array array = Array::zeros<float>(arrayShape(header.shape));
  const auto span = array.span<float>();
  forEachElement(header, count, [&](std::size_t i, std::size_t j) {
    span[i] = valueOfHalf(valueAt<std::uint16_t>(data.data() + 2 * j, header.isBigEndian));
  });
  return array;
}

template <class T>
Array complexNumbers(const NpyHeader& header, std::string_view data, std::size_t count) {
  Array array = Array::zeros<std::complex<T>>(arrayShape(header.shape));
  const auto real = array.span<T>();
  const auto imaginary = array.imaginary<T>();
  forEachElement(header, count, [&](std::size_t i, std::size_t j) {
    const char* const parts = data.data() + j * 2 * sizeof(T);
    real[i] = valueAt<T>(parts, header.isBigEndian);
    imaginary[i] = valueAt<T>(parts + sizeof(T), header.isBigEndian);
  });
  return array;
}

Array integers(const NpyHeader& header, std::string_view data, std::size_t count) {
  const bool isSigned = header.kind == 'i';
  switch (header.itemSize) {
    case 1:
      return isSigned ? numbers<std::int8_t, std::int8_t>(header, data, count)
                      : numbers<std::uint8_t, std::uint8_t>(header, data, count);
    case 2:
      return isSigned ? numbers<std::int16_t, std::int16_t>(header, data, count)
                      : numbers<std::uint16_t, std::uint16_t>(header, data, count);
    case 4:
      return isSigned ? numbers<std::int32_t, std::int32_t>(header, data, count)
                      : numbers<std::uint32_t, std::uint32_t>(header, data, count);
    default:
      return isSigned ? numbers<std::int64_t, std::int64_t>(header, data, count)
                      : numbers<std::uint64_t, std::uint64_t>(header, data, count);
  }
}

// The character at `index` of the file.
char32_t characterAt(const NpyHeader& header, std::string_view data, std::size_t index) {
  if (header.kind == 'S') {
    const auto byte = static_cast<unsigned char>(data[index]);
    if (byte < 0x80) return byte;
    throw BadInput("a byte string in the .npy file is not ASCII; save it as type U");
  }
  const auto character = valueAt<std::uint32_t>(data.data() + 4 * index, header.isBigEndian);
  if (character > 0x10FFFF)
    throw BadInput("a string in the .npy file contains an invalid character");
  return character;
}

char16_t unitAt(const NpyHeader& header, std::string_view data, std::size_t index) {
  const char32_t character = characterAt(header, data, index);
  if (character > 0xFFFF) {
    throw BadInput("an array of strings in a .npy file cannot contain characters above U+FFFF");
  }
  return static_cast<char16_t>(character);
}

// A single string, without the NULs at its end.
Array text(const NpyHeader& header, std::string_view data) {
  std::u16string units;
  std::size_t length = 0;
  for (std::size_t i = 0; i < header.itemSize; ++i) {
    const char32_t character = characterAt(header, data, i);
    if (character > 0xFFFF) {
      units += static_cast<char16_t>(0xD7C0 + (character >> 10));
      units += static_cast<char16_t>(0xDC00 | (character & 0x3FF));
    } else {
      units += static_cast<char16_t>(character);
    }
    if (character != 0) length = units.size();
  }
  return {std::u16string_view(units).substr(0, length)};
}

Array strings(const NpyHeader& header, std::string_view data, std::size_t count) {
  const std::size_t length = header.itemSize;
  if (header.shape.empty()) return text(header, data);
  if (header.shape.size() == 1) {
    Array matrix = Array::zeros<char16_t>(count, length);
    const auto units = matrix.span<char16_t>();
    for (std::size_t k = 0; k < units.size(); ++k) {
      units[k / length + k % length * count] = unitAt(header, data, k);
    }
    return matrix;
  }
  if (length != 1) {
    throw BadInput("strings in a .npy file of several dimensions must be single characters");
  }
  Array array = Array::zeros<char16_t>(arrayShape(header.shape));
  const auto units = array.span<char16_t>();
  forEachElement(header, count,
                 [&](std::size_t i, std::size_t j) { units[i] = unitAt(header, data, j); });
  return array;
}

Array elementsOf(const NpyHeader& header, std::string_view data, std::size_t count) {
  switch (header.kind) {
    case 'f':
      if (header.itemSize == 2) return halfNumbers(header, data, count);
      return header.itemSize == 4 ? numbers<float, float>(header, data, count)
                                  : numbers<double, double>(header, data, count);
    case 'c':
      return header.itemSize == 8 ? complexNumbers<float>(header, data, count)
                                  : complexNumbers<double>(header, data, count);
    case 'b':
      return numbers<std::uint8_t, bool>(header, data, count);
    case 'S':
    case 'U':
      return strings(header, data, count);
    default:
      return integers(header, data, count);
  }
}

template <class T>
void append(std::string& out, const T& value) {
  const auto bytes = std::bit_cast<std::array<char, sizeof(T)>>(value);
  out.append(bytes.data(), bytes.size());
}

template <class T>
std::string typeOf(std::size_t count) {
  const char kind = std::is_same_v<T, bool>       ? 'b'
                    : std::is_floating_point_v<T> ? 'f'
                    : std::is_signed_v<T>         ? 'i'
                                                  : 'u';
  return (count == 2 ? 'c' : kind) + std::to_string(count * sizeof(T));
}

std::string textFile(const Array& array, Shape shape) {
  const auto units = array.span<char16_t>();
  // A row is a string, and so is 0-by-0. Other shapes are arrays of characters.
  const bool isRow = shape == Shape{0, 0} || (shape.size() == 2 && shape[0] == 1 && !units.empty());
  if (isRow && !units.empty() && units[units.size() - 1] == 0) {
    throw NoNotation(
        "a string that ends in U+0000 cannot be written as .npy, because NumPy would remove it");
  }
  std::string characters;
  std::size_t length = 0;
  for (std::size_t i = 0; i < units.size(); ++i, ++length) {
    char32_t unit = units[i];
    const bool isPair = isRow && (unit & 0xFC00U) == 0xD800 && i + 1 < units.size() &&
                        (units[i + 1] & 0xFC00U) == 0xDC00;
    if (isPair) unit = 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U);
    append(characters, static_cast<std::uint32_t>(unit));
  }
  // NumPy stores an empty string as one NUL.
  if (isRow && length == 0) append(characters, std::uint32_t{0});
  const std::string type = "U" + std::to_string(isRow ? std::max<std::size_t>(length, 1) : 1);
  return npyHeader(type, isRow ? Shape() : std::move(shape)) + characters;
}

template <class T>
std::string numberFile(const Array& array, const Shape& shape) {
  const auto real = array.span<T>();
  if (!array.isComplex()) {
    std::string file = npyHeader(typeOf<T>(1), shape);
    return file.append(reinterpret_cast<const char*>(real.data()), real.size() * sizeof(T));
  }
  if constexpr (std::is_floating_point_v<T>) {
    const auto imaginary = array.imaginary<T>();
    std::string file = npyHeader(typeOf<T>(2), shape);
    for (std::size_t i = 0; i < real.size(); ++i) {
      append(file, real[i]);
      append(file, imaginary[i]);
    }
    return file;
  } else {
    throw NoNotation("NumPy has no complex integers, so this array cannot be written as .npy");
  }
}

}  // namespace

hcyclient::Array arrayOfNpy(std::string_view bytes) {
  const NpyHeader header = npyHeaderOf(bytes);
  const std::string_view data = bytes.substr(header.length);
  const std::size_t count = countOf(header, data.size());
  try {
    return elementsOf(header, data, count);
  } catch (const hcyclient::UsageError& error) {
    throw BadInput(error.what());
  }
}

std::string npyOf(const hcyclient::Array& array) {
  if (array.isCell() || array.isStruct() || array.isSparse()) {
    const std::string kind(array.isSparse() ? "sparse" : array.className());
    throw NoNotation("a " + kind + " array cannot be written as .npy");
  }
  Shape shape = array.shape();
  shape.resize(std::max<std::size_t>(shape.size(), 2), 1);
  if (shape.size() > kMostNpyDimensions) {
    throw NoNotation("a .npy file can have at most " + std::to_string(kMostNpyDimensions) +
                     " dimensions");
  }
  if (array.isText()) return textFile(array, std::move(shape));
  return withElementType(array.classId(), [&](auto type) -> std::string {
    using T = typename decltype(type)::type;
    if constexpr (std::is_same_v<T, char16_t>) {
      return textFile(array, shape);
    } else {
      return numberFile<T>(array, shape);
    }
  });
}

}  // namespace hcy::tools
