// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// The server answered with another status than 200, and may have asked to wait before a retry.
class Postponed : public hcyclient::HttpError {
 public:
  // `seconds` is 0 if it has not asked.
  Postponed(std::uint32_t status, const std::string& reason, double seconds)
      : HttpError(status, reason), seconds_(seconds) {}
  double seconds() const { return seconds_; }

 private:
  double seconds_;
};

// Makes a call, and makes it again, up to `retries` times, if its failure may pass: a timeout, a
// host that is not found, a connection that is refused or breaks off, or an answer with 408, 429,
// 500, 502, 503 or 504. Waits as long as the server asks for, but at most 6 hours; otherwise 0.1 s
// before the first retry and twice as long before each further one, but no longer than 10 s. Before
// each wait, calls `onRetry` with the failure and the length of the wait in seconds. Throws what
// the last call throws.
using Call = std::function<std::vector<hcyclient::Array>()>;
using OnRetry = std::function<void(const hcyclient::CallError& problem, double seconds)>;
std::vector<hcyclient::Array> callWithRetries(unsigned retries, const Call& call,
                                              const OnRetry& onRetry);

// The same for evaluateWithin(), silently. What a server asks for is not seen.
std::vector<hcyclient::Array> evaluateWithRetries(const hcyClientRuntime& runtime,
                                                  const hcyclient::Context& context,
                                                  const std::string& url,
                                                  const std::vector<const hcyArray*>& inputs,
                                                  int nargout, double seconds, unsigned retries);

}  // namespace hcy::tools
