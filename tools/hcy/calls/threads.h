// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <thread>
#include <vector>

namespace hcy::tools {

// Threads that work side by side. The destructor waits until all have ended.
class Threads {
 public:
  // Calls work(0) to work(count - 1), each in its own thread, after all threads have been started.
  // If one cannot be started, none of them works, and BadInput is thrown.
  Threads(unsigned count, const std::function<void(unsigned)>& work);

 private:
  std::vector<std::jthread> threads_;
};

}  // namespace hcy::tools
