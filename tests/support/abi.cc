// SPDX-License-Identifier: Apache-2.0

#include "support/abi.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace hcy::abi {

void* exportedFunction(const char* name) {
  static void* const library = dlopen(HCY_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  void* const function = library == nullptr ? nullptr : dlsym(library, name);
  if (function == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::abort();
  }
  return function;
}

}  // namespace hcy::abi
