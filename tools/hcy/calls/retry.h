// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// A call that is made again, up to `retries` times, if it fails on the way or the server answers
// with 408, 429, 500, 502, 503 or 504. Waits 0.1 s before the first time, and each time twice as
// long, but no longer than 10 s. Throws as evaluate() does.
std::vector<hcyclient::Array> evaluateWithRetries(const hcyClientRuntime& runtime,
                                                  const hcyclient::Context& context,
                                                  const std::string& url,
                                                  const std::vector<const hcyArray*>& inputs,
                                                  int nargout, unsigned retries);

}  // namespace hcy::tools
