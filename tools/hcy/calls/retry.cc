// SPDX-License-Identifier: Apache-2.0

#include "calls/retry.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "results/evaluation.h"

namespace hcy::tools {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr double kFirstPause = 0.1;
constexpr double kLongestPause = 10;
constexpr double kLongestPostponement = 6 * 3600;

bool mayPass(hcyclient::Reason reason) {
  using hcyclient::Reason;
  return reason == Reason::timeout || reason == Reason::nameNotResolved ||
         reason == Reason::connectionRefused || reason == Reason::incompleteReply;
}

bool mayPass(const hcyclient::CallError& error) {
  if (const auto* const failed = dynamic_cast<const hcyclient::TransportError*>(&error)) {
    return mayPass(failed->reason());
  }
  const auto* const answered = dynamic_cast<const hcyclient::HttpError*>(&error);
  if (answered == nullptr) return false;
  constexpr std::array<std::uint32_t, 6> passing = {408, 429, 500, 502, 503, 504};
  return std::find(passing.begin(), passing.end(), answered->status()) != passing.end();
}

// As long as the server asks for, or else the usual pause.
double pauseAfter(const hcyclient::CallError& error, double usual) {
  const auto* const postponed = dynamic_cast<const Postponed*>(&error);
  if (postponed == nullptr || postponed->seconds() <= 0) return usual;
  return std::min(postponed->seconds(), kLongestPostponement);
}

}  // namespace

std::vector<hcyclient::Array> callWithRetries(unsigned retries, const Call& call,
                                              const OnRetry& onRetry) {
  double usual = kFirstPause;
  double pause = 0;
  for (;; --retries) {
    try {
      return call();
    } catch (const hcyclient::CallError& error) {
      if (retries == 0 || !mayPass(error)) throw;
      pause = pauseAfter(error, usual);
      onRetry(error, pause);
    }
    std::this_thread::sleep_for(Seconds(pause));
    usual = std::min(usual * 2, kLongestPause);
  }
}

std::vector<hcyclient::Array> evaluateWithRetries(const hcyClientRuntime& runtime,
                                                  const hcyclient::Context& context,
                                                  const std::string& url,
                                                  const std::vector<const hcyArray*>& inputs,
                                                  int nargout, double seconds, unsigned retries) {
  return callWithRetries(
      retries, [&] { return evaluateWithin(seconds, runtime, context, url, inputs, nargout); },
      [](const hcyclient::CallError&, double) {});
}

}  // namespace hcy::tools
