// SPDX-License-Identifier: Apache-2.0
//
// Keeps the library loaded once it is, where the linker has no option for it.

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace hcy {
namespace {

bool stayLoaded() noexcept {
#ifdef _WIN32
  constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
  HMODULE library = nullptr;
  return GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(&stayLoaded), &library) != 0;
#else
  Dl_info library{};
  return dladdr(reinterpret_cast<const void*>(&stayLoaded), &library) != 0 &&
         dlopen(library.dli_fname, RTLD_NOW | RTLD_NODELETE) != nullptr;
#endif
}

[[maybe_unused]] const bool stays = stayLoaded();

}  // namespace
}  // namespace hcy
