// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace hcy::tools {

// Calls `passed` in its own thread after the seconds, unless it is destroyed before. The library
// itself can limit a call only to whole seconds.
class Deadline {
 public:
  Deadline(double seconds, std::function<void()> passed);
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
  ~Deadline();

 private:
  std::mutex mutex_;
  std::condition_variable met_;
  bool isMet_ = false;
  std::thread thread_;
};

}  // namespace hcy::tools
