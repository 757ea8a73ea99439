// SPDX-License-Identifier: Apache-2.0
//
// Calls every function of the public interface on an array that a server sent.

#pragma once

#include "hcy/hcyclient.h"

namespace hcy::fuzz {

// Asks everything that can be asked of the array and its elements, some levels deep, and reads all
// that the answers point at: as many elements as there are to be.
void readEverything(const hcyArray* array, int levels);

// Ends the program where the indices of a sparse array, as it was received, do not describe a
// matrix of its dimensions.
void requireMatrices(const hcyArray* array, int levels);

// Changes what can be changed in the array: elements, fields, shape, stored elements.
void changeEverything(hcyArray* array);

}  // namespace hcy::fuzz
