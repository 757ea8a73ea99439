// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace hcy::test {

// Runs work(0) to work(count - 1), each on a thread of its own, all from the same moment on, and
// waits for their end.
template <class Work>
void atOnce(int count, const Work& work) {
  std::latch start(count);
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&start, &work, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
}

}  // namespace hcy::test
