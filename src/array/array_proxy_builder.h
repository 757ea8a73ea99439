// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "array/array_proxy.h"

namespace hcy {

// Builds the proxy class that serves a class of arrays; throws std::invalid_argument
// "dispatch_on_QXType" for a type that is not served.
class ArrayProxyBuilder {
 public:
  // Over a message that the proxy shares.
  static std::unique_ptr<VORTENArrayProxy> over(std::shared_ptr<VORTEN_Array> message);

  // Over a new message: `count` zeros, or never-set slots.
  static std::unique_ptr<VORTENArrayProxy> create(VORTEN_Array::QXType type, Dimensions dimensions,
                                                  bool complex, std::uint64_t count);
};

}  // namespace hcy
