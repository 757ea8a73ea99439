// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

#include "wire/array_class_traits.h"

namespace hcy {

// Reserves room in an empty array for the elements that its bytes hold, where these are packed
// varints: their number cannot be told from their length, so that the parser would grow the list
// again and again. The dimensions tell, as far as the length agrees. Bytes of any other kind, or
// that are no message, reserve nothing.
void reserveElements(VORTEN_Array& array, std::span<const std::uint8_t> bytes);

}  // namespace hcy
