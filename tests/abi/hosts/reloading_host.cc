// SPDX-License-Identifier: Apache-2.0
//
// Loads a library a hundred times, uses it and unloads it. Exits with 0 when every round went
// well and the later ones left no memory behind.

#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "hcy/hcyclient.h"
#include "host_messages.h"

namespace {

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", what);
  std::exit(1);
}

#define REQUIRE(condition) require(condition, #condition)

template <class Function>
Function* find(void* library, const char* name) {
  void* const found = dlsym(library, name);
  require(found != nullptr, name);
  return reinterpret_cast<Function*>(found);
}

#define FIND(library, name) find<decltype(::name)>(library, #name)

// A call whose scheme libcurl does not know: nothing leaves the machine.
void callInVain(const hcyClientRuntime& runtime, const hcyArray* input) {
  hcyClientConfig* config = nullptr;
  hcyClientContext* context = nullptr;
  REQUIRE(runtime.createConfig(&config) == 0);
  REQUIRE(runtime.createContext(&context, config) == 0);
  REQUIRE(runtime.feval(context, "halcyon://x/", 0, nullptr, 1, &input) == 1);
  hcyErrorInfo info{};
  runtime.getLastErrorInfo(context, &info);
  REQUIRE(std::strcmp(info.details.generic.details, "Unsupported protocol") == 0);
  runtime.destroyLastErrorInfo(&info);
  runtime.destroyContext(context);
  runtime.destroyConfig(config);
}

void loadUseAndUnload(const char* path, int scope) {
  void* const library = dlopen(path, RTLD_NOW | scope);
  REQUIRE(library != nullptr);
  hcyClientRuntime* const runtime = FIND(library, hcyInitializeEx)(HCY_CLIENT_RUNTIME_1_1);
  REQUIRE(runtime != nullptr);
  hcyArray* const array = FIND(library, hcyCreateDoubleScalar)(1.5);
  callInVain(*runtime, array);
  REQUIRE(FIND(library, hcyGetScalar)(array) == 1.5);
  FIND(library, hcyDestroyArray)(array);
  REQUIRE(ownMessagesWork());
  FIND(library, hcyTerminate)();
  REQUIRE(dlclose(library) == 0);
}

}  // namespace

int main(int argc, char** argv) {
  REQUIRE(argc == 3);
  const int scope = std::string(argv[2]) == "global" ? RTLD_GLOBAL : RTLD_LOCAL;
  REQUIRE(ownMessagesWork());
  std::size_t inUse = 0;
  for (int round = 1; round <= 100; ++round) {
    loadUseAndUnload(argv[1], scope);
    REQUIRE(ownMessagesWork());
    if (round == 10) inUse = mallinfo2().uordblks;
  }
  const std::size_t inUseAtTheEnd = mallinfo2().uordblks;
  std::printf("%zu bytes in use after 10 rounds, %zu after 100\n", inUse, inUseAtTheEnd);
  // A round that leaks loses at least one block of 32 bytes. How the allocator cuts its blocks
  // changes the figure a little too, by how long the library's path is for instance.
  REQUIRE(inUseAtTheEnd < inUse + 90 * 32);
  return 0;
}
