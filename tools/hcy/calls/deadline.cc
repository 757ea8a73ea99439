// SPDX-License-Identifier: Apache-2.0

#include "calls/deadline.h"

#include <chrono>
#include <utility>

namespace hcy::tools {

Deadline::Deadline(double seconds, std::function<void()> passed)
    : thread_([this, seconds, passed = std::move(passed)] {
        std::unique_lock lock(mutex_);
        const std::chrono::duration<double> limit(seconds);
        if (!met_.wait_for(lock, limit, [this] { return isMet_; })) passed();
      }) {}

Deadline::~Deadline() {
  {
    const std::lock_guard lock(mutex_);
    isMet_ = true;
  }
  met_.notify_one();
  thread_.join();
}

}  // namespace hcy::tools
