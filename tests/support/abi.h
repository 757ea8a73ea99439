// SPDX-License-Identifier: Apache-2.0
//
// The library as the tests of its public ABI call it. They live in namespace hcy::abi and call the
// exported functions by their plain names. Built with HCY_THROUGH_DLOPEN, these names are pointers
// that dlsym found in the library, as a program that never linked it would have.

#pragma once

#include "hcy/hcyclient.h"

#ifdef HCY_THROUGH_DLOPEN

namespace hcy::abi {

// The address of an exported function; ends the program when there is none.
void* exportedFunction(const char* name);

#define HCY_EXPORTED_FUNCTION(name) \
  inline const auto name = reinterpret_cast<decltype(&::name)>(exportedFunction(#name));
#include "exported_functions.inc"
#undef HCY_EXPORTED_FUNCTION

}  // namespace hcy::abi

#endif
