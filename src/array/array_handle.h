// SPDX-License-Identifier: Apache-2.0
//
// What a handle of the caller's is: the address of a proxy.

#pragma once

#include <memory>

#include "array/array_proxy.h"
#include "hcy/hcyclient.h"

namespace hcy {

// A handle on its way to the caller.
using ArrayHandle = std::unique_ptr<VORTENArrayProxy>;

// To the functions a handle is const where they leave the array as it looks to the caller.
inline VORTENArrayProxy& proxyOf(const hcyArray* array) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
  return static_cast<VORTENArrayProxy&>(const_cast<hcyArray&>(*array));
}

inline ArrayData& dataOf(const hcyArray* array) { return proxyOf(array).data(); }

}  // namespace hcy
