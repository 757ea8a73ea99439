// SPDX-License-Identifier: Apache-2.0

#include "support/caller_names.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>

namespace hcy::test {
namespace {

struct Closer {
  void operator()(std::FILE* file) const { pclose(file); }
};

// The dynamic symbol table of a program lacks what the program keeps to itself: the full one is
// asked of nm, once.
std::map<std::uintptr_t, std::string> ownFunctions() {
  std::map<std::uintptr_t, std::string> functions;
  const std::string command = HCY_NM " --defined-only /proc/" + std::to_string(::getpid()) + "/exe";
  const std::unique_ptr<std::FILE, Closer> output(popen(command.c_str(), "r"));
  char line[4096], type = '\0', name[4096];
  unsigned long address = 0;
  while (std::fgets(line, sizeof line, output.get()) != nullptr) {
    if (std::sscanf(line, "%lx %c %4095s", &address, &type, name) == 3) functions[address] = name;
  }
  return functions;
}

std::string demangled(const char* name) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(
      abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
  return text ? text.get() : name;
}

std::string ownFunctionAt(std::uintptr_t offset) {
  static const std::map<std::uintptr_t, std::string> functions = ownFunctions();
  const auto next = functions.upper_bound(offset);
  return next == functions.begin() ? "?" : demangled(std::prev(next)->second.c_str());
}

}  // namespace

std::string functionAt(void* address) {
  Dl_info info{}, own{};
  if (dladdr(address, &info) == 0) return "? in ?";
  dladdr(reinterpret_cast<void*>(&ownFunctionAt), &own);
  const std::string file = std::string(" in ") + info.dli_fname;
  if (info.dli_fbase == own.dli_fbase) {
    // A call that does not return is the last of its function: its address is behind it.
    const auto offset = static_cast<char*>(address) - 1 - static_cast<char*>(info.dli_fbase);
    return ownFunctionAt(static_cast<std::uintptr_t>(offset)) + file;
  }
  return (info.dli_sname == nullptr ? "?" : demangled(info.dli_sname)) + file;
}

}  // namespace hcy::test
