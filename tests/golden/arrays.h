// SPDX-License-Identifier: Apache-2.0
//
// The arrays that the golden files hold, by the names of the files.

#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "support/array_value.h"

namespace hcy::abi {

struct GoldenArrays {
  std::string name;
  std::vector<Value> arrays;
};

inline void PrintTo(const GoldenArrays& golden, std::ostream* out) { *out << golden.name; }

std::vector<GoldenArrays> goldenNumericArrays();
std::vector<GoldenArrays> goldenOtherArrays();

}  // namespace hcy::abi
