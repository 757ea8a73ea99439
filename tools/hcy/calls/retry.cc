// SPDX-License-Identifier: Apache-2.0

#include "calls/retry.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "calls/evaluation.h"

namespace hcy::tools {
namespace {

using namespace std::chrono_literals;

bool mayPass(const hcyclient::CallError& error) {
  if (dynamic_cast<const hcyclient::TransportError*>(&error) != nullptr) return true;
  const auto* const answered = dynamic_cast<const hcyclient::HttpError*>(&error);
  if (answered == nullptr) return false;
  constexpr std::array<std::uint32_t, 6> passing = {408, 429, 500, 502, 503, 504};
  return std::find(passing.begin(), passing.end(), answered->status()) != passing.end();
}

}  // namespace

std::vector<hcyclient::Array> callWithRetries(unsigned retries, const Call& call,
                                              const OnRetry& onRetry) {
  std::chrono::milliseconds pause = 100ms;
  for (;; --retries) {
    try {
      return call();
    } catch (const hcyclient::CallError& error) {
      if (retries == 0 || !mayPass(error)) throw;
      onRetry(error, std::chrono::duration<double>(pause).count());
    }
    std::this_thread::sleep_for(pause);
    pause = std::min<std::chrono::milliseconds>(pause * 2, 10s);
  }
}

std::vector<hcyclient::Array> evaluateWithRetries(const hcyClientRuntime& runtime,
                                                  const hcyclient::Context& context,
                                                  const std::string& url,
                                                  const std::vector<const hcyArray*>& inputs,
                                                  int nargout, unsigned retries) {
  return callWithRetries(
      retries, [&] { return evaluate(runtime, context, url, inputs, nargout); },
      [](const hcyclient::CallError&, double) {});
}

}  // namespace hcy::tools
