/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file retry.hpp
 * @brief Repeats a call that the server did not accept. Included by hcyclient.hpp.
 */
#ifndef HCY_CPP_RETRY_HPP
#define HCY_CPP_RETRY_HPP

#include <chrono>
#include <hcy/cpp/error.hpp>
#include <thread>

namespace hcyclient {

/** @addtogroup cpp_runtime
 *  @{ */

/** How often a call is attempted until the server accepts it. A call is repeated only if its
 *  function did not run (CallError::isRetryable()): after a refused connection, and after HTTP
 *  status 503. */
struct Retry {
  int attempts = 1;                       /**< attempts in all; 1 or less for a single one */
  std::chrono::milliseconds backoff{100}; /**< pause before the second one; it doubles each time */

  /** Makes the call, `retry.run([&] { return context.call(url, a); })`, and returns its result.
   *  Throws what the last attempt throws. */
  template <class Call>
  auto run(const Call& call) const {
    return run(call, [](std::chrono::milliseconds pause) {
      std::this_thread::sleep_for(pause);
      return true;
    });
  }

  /** The same with your own function for the pause: `pause(duration)` returns whether to go on. */
  template <class Call, class Pause>
  auto run(const Call& call, const Pause& pause) const {
    std::chrono::milliseconds next = backoff;
    for (int left = attempts; left > 1; --left) {
      try {
        return call();
      } catch (const CallError& error) {
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
