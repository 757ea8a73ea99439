// SPDX-License-Identifier: Apache-2.0
//
// Bodies of requests and replies from arrays and back, by the library itself.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// The body that a call with these inputs sends, byte for byte. Throws hcyclient::CallError if the
// library cannot send them.
std::string requestBody(const hcyclient::Library& library,
                        const std::vector<hcyclient::Array>& inputs, int nargout);

// The outputs in the body of a reply, of which there are `count`. Throws as evaluate() does.
std::vector<hcyclient::Array> outputsOf(const hcyclient::Library& library, const std::string& reply,
                                        int count);

}  // namespace hcy::tools
