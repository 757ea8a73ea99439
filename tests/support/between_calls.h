// SPDX-License-Identifier: Apache-2.0
//
// Lets the script of a connection send bytes while the client makes no call:
//
//   Connection{readRequest(), send(reply), between.waitForCallEnd(), send(more),
//              between.reportSent(), waitForClose()}

#pragma once

#include <chrono>
#include <semaphore>

#include "script_channel.h"
#include "script_steps.h"

namespace hcy::test {

class BetweenCalls {
 public:
  Step waitForCallEnd() {
    return {"waitForCallEnd", [this](Stage&) {
              if (!called_.try_acquire_for(kPatience)) throw ScriptFailure("no call has ended");
            }};
  }
  Step reportSent() {
    return {"reportSent", [this](Stage&) { sent_.release(); }};
  }

  // To be called when a call has ended: waits until the script has sent the bytes. Of a connection
  // without a proxy in between, they are in the client's socket then.
  bool sendNow() {
    called_.release();
    return sent_.try_acquire_for(kPatience);
  }

 private:
  static constexpr std::chrono::seconds kPatience{10};

  std::binary_semaphore called_{0};
  std::binary_semaphore sent_{0};
};

}  // namespace hcy::test
