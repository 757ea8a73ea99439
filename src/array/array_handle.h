// SPDX-License-Identifier: Apache-2.0
//
// The block behind an array handle.

#pragma once

#include <memory>

#include "array/array_proxy.h"
#include "hcy/hcyclient.h"

// Allocated with malloc, and holds nothing but the proxy that it owns.
struct hcyArray {
  std::unique_ptr<hcy::VORTENArrayProxy> proxy;
};

namespace hcy {

struct ArrayDestroyer {
  void operator()(hcyArray* array) const { hcyDestroyArray(array); }
};

// A handle on its way to the caller.
using ArrayHandle = std::unique_ptr<hcyArray, ArrayDestroyer>;

// A handle without a proxy; throws std::bad_alloc.
ArrayHandle allocateHandle();

// A handle over a message that it shares; throws std::invalid_argument when the type of the
// message is not served, and std::bad_alloc.
ArrayHandle wrapMessage(std::shared_ptr<VORTEN_Array> message);

inline VORTEN_Array& messageOf(const hcyArray* array) { return array->proxy->message(); }

}  // namespace hcy
