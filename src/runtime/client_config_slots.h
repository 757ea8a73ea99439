// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "hcy/hcyclient.h"
#include "runtime/client_config.h"

// What the runtime table calls a configuration; without one when memory ran out on the way.
struct hcyClientConfig {
  std::unique_ptr<hcy::QXClientConfig> config;
};

namespace hcy {

// Fill the table's configuration slots of the two interface versions.
void fillConfigSlots_1_0(hcyClientRuntime& runtime);
void fillConfigSlots_1_1(hcyClientRuntime& runtime);

}  // namespace hcy
