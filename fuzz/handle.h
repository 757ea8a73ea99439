// SPDX-License-Identifier: Apache-2.0
//
// Owners of what the library hands out.

#pragma once

#include <memory>

#include "hcy/hcyclient.h"

namespace hcy::fuzz {

struct Destroyer {
  void operator()(hcyArray* array) const { hcyDestroyArray(array); }
};
using Handle = std::unique_ptr<hcyArray, Destroyer>;

struct Freer {
  void operator()(char* text) const { hcyFree(text); }
};
using Text = std::unique_ptr<char, Freer>;

}  // namespace hcy::fuzz
