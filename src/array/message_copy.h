// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "hcy.client.VORTENArray.pb.h"

namespace hcy {

// A deep copy. The generated copy constructor would lose all that it has copied when an allocation
// fails on the way; a message that is filled is destroyed with what it holds by then.
inline std::shared_ptr<client::VORTEN_Array> copyOf(const client::VORTEN_Array& array) {
  auto copy = std::make_shared<client::VORTEN_Array>();
  copy->CopyFrom(array);
  return copy;
}

}  // namespace hcy
