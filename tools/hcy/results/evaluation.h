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

// Like evaluate(), but throws the TransportError of a timeout if the call took longer than
// `seconds`; 0 means no limit. This does not end the call: the library does, whose timeout is in
// whole seconds.
std::vector<hcyclient::Array> evaluateWithin(double seconds, const hcyClientRuntime& runtime,
                                             const hcyclient::Context& context,
                                             const std::string& url,
                                             const std::vector<const hcyArray*>& inputs,
                                             int nargout);

// The limit for evaluateWithin() under this timeout in seconds: 0 if the library can keep it.
double fractionalLimit(std::optional<double> timeout);

std::vector<const hcyArray*> handlesOf(const std::vector<hcyclient::Array>& arrays);

}  // namespace hcy::tools
