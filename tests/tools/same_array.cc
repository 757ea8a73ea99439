// SPDX-License-Identifier: Apache-2.0

#include "same_array.h"

#include <complex>
#include <cstring>

#include "notations/element_types.h"

namespace hcy::test {
namespace {

using hcyclient::Array;

template <class T>
bool haveSameBytes(hcyclient::Span<const T> a, hcyclient::Span<const T> b) {
  return a.size() == b.size() &&
         (a.size() == 0 || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

template <class T>
std::string entriesDiffer(const Array& a, const Array& b) {
  const auto first = a.entries<T>();
  const auto second = b.entries<T>();
  if (first.size() != second.size()) return "number of entries";
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (first[i].row != second[i].row || first[i].column != second[i].column ||
        std::memcmp(&first[i].value, &second[i].value, sizeof(T)) != 0) {
      return "entry " + std::to_string(i);
    }
  }
  return "";
}

template <class T>
std::string elementsDiffer(const Array& a, const Array& b) {
  if (!haveSameBytes(a.span<T>(), b.span<T>())) return "elements";
  if constexpr (tools::isNumber<T>) {
    if (!haveSameBytes(a.imaginary<T>(), b.imaginary<T>())) return "imaginary parts";
  }
  return "";
}

}  // namespace

std::string differenceOf(const Array& a, const Array& b) {
  if (a.classId() != b.classId()) return "class";
  if (a.shape() != b.shape()) return "shape";
  if (a.isSparse() != b.isSparse()) return "sparseness";
  if (a.isComplex() != b.isComplex()) return "complexity";
  if (a.fieldNames() != b.fieldNames()) return "fields";
  if (a.isSparse()) {
    if (a.is<bool>()) return entriesDiffer<bool>(a, b);
    return a.isComplex() ? entriesDiffer<std::complex<double>>(a, b) : entriesDiffer<double>(a, b);
  }
  if (!a.isCell() && !a.isStruct()) {
    return tools::withElementType(a.classId(), [&](auto type) {
      return elementsDiffer<typename decltype(type)::type>(a, b);
    });
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto inner = [&](const Array& x, const Array& y) {
      const std::string difference = differenceOf(x, y);
      return difference.empty() ? difference : difference + " in element " + std::to_string(i);
    };
    if (a.isCell()) {
      if (const auto difference = inner(a[i], b[i]); !difference.empty()) return difference;
    }
    for (const std::string& name : a.fieldNames()) {
      if (const auto difference = inner(a(i, name), b(i, name)); !difference.empty()) {
        return difference + ", field " + name;
      }
    }
  }
  return "";
}

}  // namespace hcy::test
