// SPDX-License-Identifier: Apache-2.0
//
// What the library makes of an array of a reply, told by the message library's classes alone.

#pragma once

#include "hcy.client.VORTENArray.pb.h"
#include "hcy/hcyclient.h"

namespace hcy::fuzz {

using client::VORTEN_Array;

// The array as it is sent again: elements of 16 bits are their low bits, and these and containers
// have their part.
void commit(VORTEN_Array& array);

// The same array with the parts that appear when its elements are asked for, at all levels.
void showParts(VORTEN_Array& array);

// Ends the program where a handle answers otherwise than the message says, some levels deep.
void requireSame(const hcyArray* array, const VORTEN_Array& message, int levels);

}  // namespace hcy::fuzz
