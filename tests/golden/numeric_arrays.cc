// SPDX-License-Identifier: Apache-2.0
//
// Of every numeric class a real and a complex array, with the ends of its range.

#include <cstdint>
#include <limits>

#include "arrays.h"

namespace hcy::abi {
namespace {

template <class Integer>
GoldenArrays integers(const std::string& name, hcyClassID classId, Integer somewhere) {
  constexpr Integer least = std::numeric_limits<Integer>::min();
  constexpr Integer largest = std::numeric_limits<Integer>::max();
  constexpr Integer one = 1;
  return {name,
          {numeric<Integer>(classId, {2, 3}, {0, one, 127, least, largest, somewhere}),
           numeric<Integer>(classId, {1, 2}, {largest, 0}, {least, somewhere})}};
}

template <class Float>
GoldenArrays floats(const std::string& name, hcyClassID classId, Float somewhere) {
  using Limits = std::numeric_limits<Float>;
  return {name,
          {numeric<Float>(classId, {3, 3},
                          {0, Float{-0.0}, 1, somewhere, Limits::max(), Limits::denorm_min(),
                           Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}),
           numeric<Float>(classId, {2, 1}, {1, Float{-2.5}}, {somewhere, 0})}};
}

}  // namespace

std::vector<GoldenArrays> goldenNumericArrays() {
  return {integers<std::uint8_t>("uint8", hcyUINT8_CLASS, 200),
          integers<std::int8_t>("int8", hcyINT8_CLASS, -1),
          integers<std::uint16_t>("uint16", hcyUINT16_CLASS, 300),
          integers<std::int16_t>("int16", hcyINT16_CLASS, -1),
          integers<std::uint32_t>("uint32", hcyUINT32_CLASS, 0x01020304),
          integers<std::int32_t>("int32", hcyINT32_CLASS, -1),
          integers<std::uint64_t>("uint64", hcyUINT64_CLASS, 300),
          integers<std::int64_t>("int64", hcyINT64_CLASS, -1),
          floats<float>("single", hcySINGLE_CLASS, 3.1415927F),
          floats<double>("double", hcyDOUBLE_CLASS, 3.141592653589793)};
}

}  // namespace hcy::abi
