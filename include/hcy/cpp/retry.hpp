/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file retry.hpp
 * @brief Another attempt at a call that the server did not take. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_RETRY_HPP
#define HCY_CPP_RETRY_HPP

#include <chrono>
#include <hcy/cpp/error.hpp>
#include <thread>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/** How often a call is made until the server takes it. Only what did not run the function is tried
 *  again: a connection that was refused, and HTTP status 503. */
struct Retry {
  int attempts = 1;                       /**< calls in all; 1 and less for no second one */
  std::chrono::milliseconds backoff{100}; /**< pause before the second call; it doubles each time */

  /** Makes the call, `retry.run([&] { return context.call(url, a); })`, and returns what it
   * returns. Throws what the last attempt throws. */
  template <class Call>
  auto run(const Call& call) const {
    return run(call, [](std::chrono::milliseconds pause) {
      std::this_thread::sleep_for(pause);
      return true;
    });
  }

  /** The same with a pause of one's own: `pause(duration)` returns whether to go on. */
  template <class Call, class Pause>
  auto run(const Call& call, const Pause& pause) const {
    std::chrono::milliseconds next = backoff;
    for (int left = attempts; left > 1; --left) {
      try {
        return call();
      } catch (const TransportError& error) {
        if (!error.isRetryable() || !pause(next)) throw;
      } catch (const HttpError& error) {
        if (!error.isRetryable() || !pause(next)) throw;
      }
      next *= 2;
    }
    return call();
  }
};

/** @} */

}  // namespace hcyclient

#endif  // HCY_CPP_RETRY_HPP
