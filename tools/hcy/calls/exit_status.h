// SPDX-License-Identifier: Apache-2.0
//
// What hcy tells the shell.

#pragma once

namespace hcy::tools {

enum ExitStatus : int {
  kSuccess = 0,
  kFunctionError = 1,
  kHttpError = 2,
  kTransportError = 3,  // and whatever else keeps a call or its outputs from arriving whole
  kUsage = 64,          // as EX_USAGE of <sysexits.h>: what the user gave cannot be used
};

}  // namespace hcy::tools
