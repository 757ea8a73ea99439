// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// Makes a call, and makes it again, up to `retries` times, if it fails on the way or the server
// answers with 408, 429, 500, 502, 503 or 504. Waits 0.1 s before the first retry and twice as long
// before each further one, but no longer than 10 s. Before each wait, calls `onRetry` with the
// failure and the length of the wait in seconds. Throws what the last call throws.
using Call = std::function<std::vector<hcyclient::Array>()>;
using OnRetry = std::function<void(const hcyclient::CallError& problem, double seconds)>;
std::vector<hcyclient::Array> callWithRetries(unsigned retries, const Call& call,
                                              const OnRetry& onRetry);

// The same for evaluate(), silently.
std::vector<hcyclient::Array> evaluateWithRetries(const hcyClientRuntime& runtime,
                                                  const hcyclient::Context& context,
                                                  const std::string& url,
                                                  const std::vector<const hcyArray*>& inputs,
                                                  int nargout, unsigned retries);

}  // namespace hcy::tools
