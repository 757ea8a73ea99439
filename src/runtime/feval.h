// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "hcy/hcyclient.h"

namespace hcy {

// Operation of the runtime table: evaluates a function on a server.
int feval(hcyClientContext* context, const char* url, std::int32_t nargout, hcyArray** outputs,
          std::int32_t nargin, const hcyArray* const* inputs);

}  // namespace hcy
