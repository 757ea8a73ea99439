// SPDX-License-Identifier: Apache-2.0
//
// Start and end of the library.

#include <curl/curl.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "hcy/hcyclient.h"
#include "memory/kept_blocks.h"
#include "runtime/exception_text.h"
#include "runtime/runtime_table.h"

namespace {

// Never destroyed: static objects of the host may use the library until the program has ended.
hcyClientRuntime* runtimeTable = nullptr;
// The same; nothing is allocated for it while the library is loaded, which cannot fail in order.
alignas(std::string) std::byte messageStorage[sizeof(std::string)];
std::string& initializationErrorMessage = *new (messageStorage) std::string;

std::unique_ptr<hcyClientRuntime> makeRuntime(int version) {
  if (version != HCY_CLIENT_RUNTIME_1_0 && version != HCY_CLIENT_RUNTIME_1_1) {
    throw std::runtime_error("Invalid version number.");
  }
  // Allocated first, so that libcurl is never left initialized without a table.
  auto runtime = std::make_unique<hcyClientRuntime>();
  if (curl_global_init(CURL_GLOBAL_ALL) != CURLE_OK) {
    throw std::runtime_error("Global initialization of QXHttpClient failed");
  }
  hcy::fillSlots_1_0(*runtime);
  if (version == HCY_CLIENT_RUNTIME_1_1) hcy::fillSlots_1_1(*runtime);
  return runtime;
}

}  // namespace

hcyClientRuntime* hcyInitialize(void) { return hcyInitializeEx(HCY_CLIENT_RUNTIME_1_0); }

hcyClientRuntime* hcyInitializeEx(int version) {
  if (runtimeTable != nullptr) return runtimeTable;
  try {
    runtimeTable = makeRuntime(version).release();
  } catch (const std::exception& exception) {
    hcy::storeText(exception, initializationErrorMessage);
  }
  return runtimeTable;
}

void hcyTerminate(void) {
  if (runtimeTable == nullptr) return;
  delete runtimeTable;
  runtimeTable = nullptr;
  curl_global_cleanup();
  initializationErrorMessage.clear();
  hcy::releaseKeptBlocks();
}

const char* hcyGetInitializationErrorMessage(void) { return initializationErrorMessage.c_str(); }
