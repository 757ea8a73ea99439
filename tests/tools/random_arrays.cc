// SPDX-License-Identifier: Apache-2.0

#include "random_arrays.h"

#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "notations/element_types.h"

namespace hcy::test {

using hcyclient::Array;
using hcyclient::Shape;

Array RandomArrays::next(int depth) {
  const std::size_t kind = below(depth > 0 ? 15 : 13);
  if (kind == 12) return sparse();
  if (kind == 13) return cell(depth - 1);
  if (kind == 14) return structure(depth - 1);
  return full(static_cast<hcyClassID>(kind));
}

Shape RandomArrays::shape() {
  if (oneIn(3)) return {1, 1};
  if (oneIn(3)) return {1, below(6)};
  Shape shape(oneIn(4) ? 3 + below(3) : 2);
  for (std::size_t& dimension : shape) dimension = below(4);
  return shape;
}

Array RandomArrays::full(hcyClassID classId) {
  return tools::withElementType(
      classId, [this](auto type) { return elements<typename decltype(type)::type>(); });
}

template <class T>
Array RandomArrays::elements() {
  if constexpr (tools::isNumber<T>) {
    if (oneIn(4)) {
      Array array = Array::zeros<std::complex<T>>(shape());
      for (T& real : array.span<T>()) real = element<T>();
      for (T& imaginary : array.imaginary<T>()) imaginary = element<T>();
      return array;
    }
  }
  Array array = Array::zeros<T>(shape());
  for (T& value : array.span<T>()) value = element<T>();
  return array;
}

template <class T>
T RandomArrays::element() {
  if constexpr (std::is_same_v<T, bool>) {
    return oneIn(2);
  } else if constexpr (std::is_same_v<T, char16_t>) {
    // Letters, with NUL, quotes, controls, surrogates alone and in pairs among them.
    constexpr char16_t odd[] = {0,    '"',    '\\',   '\n',   0x1B,  0x7F,
                                0xE9, 0x4E2D, 0xD83D, 0xDE00, 0xFFFF};
    return oneIn(3) ? odd[below(std::size(odd))] : static_cast<char16_t>('a' + below(26));
  } else if constexpr (std::is_floating_point_v<T>) {
    using Limits = std::numeric_limits<T>;
    const T odd[] = {0,
                     -T(0),
                     1,
                     -1,
                     Limits::infinity(),
                     -Limits::infinity(),
                     Limits::quiet_NaN(),
                     Limits::min(),
                     Limits::denorm_min(),
                     Limits::max(),
                     Limits::lowest()};
    if (oneIn(2)) return odd[below(std::size(odd))];
    using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
    const T any = std::bit_cast<T>(static_cast<Bits>(random_()));
    return std::isnan(any) ? Limits::quiet_NaN() : any;
  } else {
    const T odd[] = {0, 1, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
    return oneIn(2) ? odd[below(std::size(odd))] : static_cast<T>(random_());
  }
}

Array RandomArrays::sparse() {
  const std::size_t rows = below(4);
  const std::size_t columns = below(4);
  const auto entriesOf = [&]<class T>(std::type_identity<T>) {
    std::vector<hcyclient::Entry<T>> entries;
    for (std::size_t i = 0; i < rows * columns; ++i) {
      if (oneIn(2)) continue;
      T value{};
      if constexpr (std::is_same_v<T, std::complex<double>>) {
        value = {element<double>(), element<double>()};
      } else {
        value = element<T>();
      }
      entries.push_back({i % rows, i / rows, value});
    }
    return Array::sparse<T>(rows, columns, std::move(entries));
  };
  if (oneIn(3)) return entriesOf(std::type_identity<bool>());
  if (oneIn(2)) return entriesOf(std::type_identity<double>());
  return entriesOf(std::type_identity<std::complex<double>>());
}

Array RandomArrays::cell(int depth) {
  Array array = Array::cells(shape());
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (!oneIn(5)) array[i] = next(depth);
  }
  return array;
}

Array RandomArrays::structure(int depth) {
  const std::vector<std::string> names = {"a", "int16", "$double", "", "größe", "$shape", "x\ny"};
  std::vector<std::string> chosen;
  for (const std::string& name : names) {
    if (oneIn(name.starts_with('$') ? 8 : 3)) chosen.push_back(name);
  }
  Array array = Array::structs(shape(), chosen);
  for (std::size_t i = 0; i < array.size(); ++i) {
    for (const std::string& name : chosen) {
      if (!oneIn(5)) array(i, name) = next(depth);
    }
  }
  return array;
}

}  // namespace hcy::test
