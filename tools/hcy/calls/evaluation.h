// SPDX-License-Identifier: Apache-2.0
//
// One call of a function.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// The outputs as they arrived; requireWhole() finds missing elements. Throws hcyclient::CallError
// if the call fails. The context must belong to the runtime.
std::vector<hcyclient::Array> evaluate(const hcyClientRuntime& runtime,
                                       const hcyclient::Context& context, const std::string& url,
                                       const std::vector<const hcyArray*>& inputs, int nargout);

std::vector<const hcyArray*> handlesOf(const std::vector<hcyclient::Array>& arrays);

}  // namespace hcy::tools
