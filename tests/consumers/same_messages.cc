// SPDX-License-Identifier: Apache-2.0
//
// A host that uses the system's Protocol Buffers and has registered, with it, files of the names
// that the library's own have. The two get along when the library keeps its Protocol Buffers to
// itself.
//
// Usage: same_messages LIBRARY URL local|global

#include <dlfcn.h>
#include <hcy/hcyclient.h>

#include <cstdio>
#include <cstring>

#include "hcy.client.VORTENError.pb.h"

namespace {

template <class Function>
Function* find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

#define FIND(library, name) find<decltype(::name)>(library, #name)

bool ownMessagesWork() {
  hcy::client::VORTEN_Error error;
  error.set_identifier("host:own");
  hcy::client::VORTEN_Error read;
  const auto* const pool = google::protobuf::DescriptorPool::generated_pool();
  return read.ParseFromString(error.SerializeAsString()) && read.identifier() == "host:own" &&
         pool->FindMessageTypeByName("hcy.client.VORTEN_Error") == read.GetDescriptor();
}

bool call(void* library, const char* url) {
  hcyClientRuntime* const runtime = FIND(library, hcyInitialize)();
  hcyClientConfig* config = nullptr;
  hcyClientContext* context = nullptr;
  if (runtime == nullptr || runtime->createConfig(&config) != 0 ||
      runtime->createContext(&context, config) != 0) {
    return false;
  }
  hcyArray* const number = FIND(library, hcyCreateDoubleScalar)(2);
  const hcyArray* const inputs[] = {number, number};
  hcyArray* sum = nullptr;
  const bool succeeded = runtime->feval(context, url, 1, &sum, 2, inputs) == 0 &&
                         FIND(library, hcyGetScalar)(sum) == 4;
  FIND(library, hcyDestroyArray)(number);
  FIND(library, hcyDestroyArray)(sum);
  runtime->destroyContext(context);
  runtime->destroyConfig(config);
  FIND(library, hcyTerminate)();
  return succeeded;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 || !ownMessagesWork()) return 1;
  const int scope = std::strcmp(argv[3], "global") == 0 ? RTLD_GLOBAL : RTLD_LOCAL;
  void* const library = dlopen(argv[1], RTLD_NOW | scope);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  if (!call(library, argv[2])) return 2;
  if (!ownMessagesWork()) return 3;
  std::puts("2 + 2 = 4");
  return 0;
}
