// SPDX-License-Identifier: Apache-2.0
//
// One call of a function.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// The outputs as they arrived: what is missing in them is for requireWhole() to find, which can
// tell where. Throws hcyclient::CallError if the call fails. The context belongs to the runtime.
std::vector<hcyclient::Array> evaluate(const hcyClientRuntime& runtime,
                                       const hcyclient::Context& context, const std::string& url,
                                       const std::vector<const hcyArray*>& inputs, int nargout);

std::vector<const hcyArray*> handlesOf(const std::vector<hcyclient::Array>& arrays);

}  // namespace hcy::tools
