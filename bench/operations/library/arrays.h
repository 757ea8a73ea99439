// SPDX-License-Identifier: Apache-2.0
//
// Column vectors of zeros of every class.

#pragma once

#include <hcy/hcyclient.h>

#include <memory>

namespace hcy::bench {

struct Destroyer {
  void operator()(hcyArray* array) const { hcyDestroyArray(array); }
};
using Array = std::unique_ptr<hcyArray, Destroyer>;

inline constexpr hcyClassID classCount = hcyCELL_CLASS + 1;

Array makeArray(hcyClassID classid, std::size_t count);

// A 1-by-1 struct array, in each field a 1-by-1 double.
Array makeStruct(int fields);

}  // namespace hcy::bench
