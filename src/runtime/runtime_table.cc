// SPDX-License-Identifier: Apache-2.0

#include "runtime/runtime_table.h"

#include <cstddef>

#include "runtime/client_config_slots.h"
#include "runtime/client_context.h"
#include "runtime/error_info.h"
#include "runtime/feval.h"

namespace hcy {

// Interface version 1.0 ends with slot 10; the order of the slots never changes.
static_assert(offsetof(hcyClientRuntime, setClientCertFile) == 11 * sizeof(void (*)()));
static_assert(sizeof(hcyClientRuntime) == 25 * sizeof(void (*)()));

void fillSlots_1_0(hcyClientRuntime& runtime) {
  fillConfigSlots_1_0(runtime);
  runtime.createContext = createContext;
  runtime.destroyContext = destroyContext;
  runtime.getLastErrorInfo = getLastErrorInfo;
  runtime.destroyLastErrorInfo = destroyLastErrorInfo;
  runtime.feval = feval;
}

void fillSlots_1_1(hcyClientRuntime& runtime) { fillConfigSlots_1_1(runtime); }

}  // namespace hcy
