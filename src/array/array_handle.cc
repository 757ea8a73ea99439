// SPDX-License-Identifier: Apache-2.0

#include "array/array_handle.h"

#include <cstdlib>

void hcyDestroyArray(hcyArray* array) { delete array; }

hcyArray* hcyDuplicateArray(const hcyArray* array) { return hcy::proxyOf(array).clone().release(); }

void hcyFree(void* memory) { std::free(memory); }
