// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wire/bytes.h"

namespace hcy {

// Whether an array in wire form is well-formed and is exactly what the message library writes for
// what it holds, with no field but those of ordinary arrays: then it can be kept, and sent again,
// as it is. False also if messages are nested more than `nesting` levels deep in it.
bool isCanonical(Bytes array, int nesting);

}  // namespace hcy
