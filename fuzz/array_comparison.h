// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "array_model.h"

namespace hcy::fuzz {

// The real elements, by the getter of the array's class.
void* dataOf(const hcyArray* array);

// Ends the program where an array answers otherwise than its model. The elements of containers are
// left alone.
void requireSame(const hcyArray* array, Model& model);

// The elements too, at all levels. Those that were never set are read, and exist from then on.
void requireSameThroughout(const hcyArray* array, Model& model);

}  // namespace hcy::fuzz
