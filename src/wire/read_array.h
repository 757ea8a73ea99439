// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wire/array_data.h"
#include "wire/bytes.h"
#include "wire/packed_arrays.h"

namespace hcy {

// Reads an array of a reply into an empty target, as far as it arrived and is well-formed; false if
// that is not all. An element whose bytes are cut is not there. Of wider values than those of a
// 16-bit class only the low bits are kept.
bool readArray(ArrayData& target, Bytes bytes);

// The same of bytes that lie in memory which the owner keeps, and which may be written: many
// elements stay there, and are only moved to an address that suits them.
bool readArrayInPlace(ArrayData& target, Bytes bytes, const std::shared_ptr<void>& owner);

// Reads an array that is well-formed, and stays where it lies: the elements of a container share
// its memory. Wider values are sent again as they came.
void readPackedArray(ArrayData& target, const PackedArrays& arrays, std::size_t index);

}  // namespace hcy
