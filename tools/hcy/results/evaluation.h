// SPDX-License-Identifier: Apache-2.0
//
// One call of a function.

#pragma once

#include <hcy/hcyclient.hpp>
#include <optional>
#include <string>
#include <vector>

namespace hcy::tools {

// The outputs as they arrived; requireWhole() finds missing elements. Throws hcyclient::CallError
// if the call fails. The context must belong to the runtime.
std::vector<hcyclient::Array> evaluate(const hcyClientRuntime& runtime,
                                       const hcyclient::Context& context, const std::string& url,
                                       const std::vector<const hcyArray*>& inputs, int nargout);

// The same, but a call that takes longer than `seconds` fails with a timeout; 0 is no limit. The
// library itself limits a call only to whole seconds, and such a call ends with its limit.
std::vector<hcyclient::Array> evaluateWithin(double seconds, const hcyClientRuntime& runtime,
                                             const hcyclient::Context& context,
                                             const std::string& url,
                                             const std::vector<const hcyArray*>& inputs,
                                             int nargout);

// The limit for evaluateWithin() under this timeout in seconds: 0 if the library can keep it.
double fractionalLimit(std::optional<double> timeout);

std::vector<const hcyArray*> handlesOf(const std::vector<hcyclient::Array>& arrays);

}  // namespace hcy::tools
