// SPDX-License-Identifier: Apache-2.0
//
// A call whose bodies and times are seen.

#pragma once

#include <hcy/hcyclient.hpp>
#include <vector>

#include "settings/options.h"

namespace hcy::tools {

// Makes the call in three steps: the library encodes the request, the tool sends it as the library
// would, and the library reads the reply. Shows on standard error what -v asks for and keeps the
// bodies that are to be kept, also those of calls that fail. Throws as evaluate() does, and
// std::system_error if a body cannot be written.
std::vector<hcyclient::Array> openCall(const hcyclient::Library& library,
                                       const hcyclient::Config& config,
                                       const std::vector<hcyclient::Array>& inputs,
                                       const Options& options);

}  // namespace hcy::tools
