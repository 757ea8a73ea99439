// SPDX-License-Identifier: Apache-2.0
//
// Column vectors of zeros of every class, as plain messages.

#pragma once

#include <cstddef>
#include <memory>

#include "hcy.client.VORTENArray.pb.h"

namespace hcy::bench {

using client::VORTEN_Array;
using Message = std::unique_ptr<VORTEN_Array>;

Message makeMessage(VORTEN_Array::QXType type, std::size_t count);

// A 1-by-1 struct array, in each field a 1-by-1 double.
Message makeStructMessage(int fields);

}  // namespace hcy::bench
