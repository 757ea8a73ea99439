// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "hcy/hcyclient.h"

namespace hcy {

// Fills the slots of an interface version and touches no other: a table of version 1.0 may end
// behind slot 10.
void fillSlots_1_0(hcyClientRuntime& runtime);

// Those that version 1.1 added to it.
void fillSlots_1_1(hcyClientRuntime& runtime);

}  // namespace hcy
