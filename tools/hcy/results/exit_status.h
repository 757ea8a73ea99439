// SPDX-License-Identifier: Apache-2.0
//
// The exit statuses of hcy.

#pragma once

namespace hcy::tools {

enum ExitStatus : int {
  kSuccess = 0,
  kFunctionError = 1,
  kHttpError = 2,
  kTransportError = 3,  // and any other failure of a call or of its outputs
  kUsage = 64,          // EX_USAGE of <sysexits.h>: what the user gave cannot be used
};

}  // namespace hcy::tools
