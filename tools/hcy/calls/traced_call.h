// SPDX-License-Identifier: Apache-2.0
//
// A call that is shown in detail.

#pragma once

#include <hcy/hcyclient.hpp>
#include <vector>

#include "settings/options.h"

namespace hcy::tools {

// Makes the call in three steps: the library encodes the request, the tool sends it as the library
// would, and the library reads the reply. With -v, shows the details on standard error. Saves the
// bodies if the options request it, also if the call fails. Throws as evaluate() does, and
// std::system_error if a body cannot be written.
std::vector<hcyclient::Array> tracedCall(const hcyclient::Library& library,
                                         const hcyclient::Config& config,
                                         const std::vector<hcyclient::Array>& inputs,
                                         const Options& options);

}  // namespace hcy::tools
