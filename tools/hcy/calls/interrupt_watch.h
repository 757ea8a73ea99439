// SPDX-License-Identifier: Apache-2.0
//
// The interrupt key (Ctrl-C) while threads make calls.

#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace hcy::tools {

// Calls `use` when the process gets SIGINT, on a thread of its own, and then ends the process by
// that signal. Must be created before the other threads, which inherit that SIGINT is blocked.
class InterruptWatch {
 public:
  explicit InterruptWatch(std::function<void()> use);
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();

 private:
  void run();

  std::function<void()> use_;
  sigset_t interrupt_{};
  sigset_t before_{};
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

}  // namespace hcy::tools
