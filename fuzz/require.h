// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdio>
#include <cstdlib>

namespace hcy::fuzz {

// Ends the program where something does not hold.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace hcy::fuzz

#define HCY_REQUIRE(condition) ::hcy::fuzz::require(condition, #condition)
