// SPDX-License-Identifier: Apache-2.0
//
// Bodies of requests and replies from arrays and back, by the library itself.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <limits>
#include <string>
#include <vector>

namespace hcy::tools {

struct EncodedRequest {
  std::vector<std::string> headers;  // without those that any transport adds
  std::string body;
};

// What a call with these inputs sends, byte for byte. Throws hcyclient::CallError if the library
// cannot send them.
EncodedRequest requestOf(const hcyclient::Library& library,
                         const std::vector<hcyclient::Array>& inputs, int nargout);

// The outputs in the body of a reply, of which there are `count`; `limit` is the library's limit on
// its size. Throws as evaluate() does.
std::vector<hcyclient::Array> outputsOf(
    const hcyclient::Library& library, const std::string& reply, int count,
    std::uint32_t limit = std::numeric_limits<std::uint32_t>::max());

}  // namespace hcy::tools
