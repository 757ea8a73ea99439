// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "hcy/hcyclient.h"

namespace hcy {

// Operations of the runtime table.
void getLastErrorInfo(const hcyClientContext* context, hcyErrorInfo* info);
void destroyLastErrorInfo(hcyErrorInfo* info);

}  // namespace hcy
