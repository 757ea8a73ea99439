// SPDX-License-Identifier: Apache-2.0

#include "calls/threads.h"

#include <future>
#include <string>
#include <system_error>

#include "text/source_text.h"

namespace hcy::tools {

Threads::Threads(unsigned count, const std::function<void(unsigned)>& work) {
  std::promise<bool> start;
  const std::shared_future<bool> isStarted = start.get_future().share();
  threads_.reserve(count);
  try {
    for (unsigned i = 0; i < count; ++i) {
      threads_.emplace_back([i, isStarted, work] {
        if (isStarted.get()) work(i);
      });
    }
  } catch (const std::system_error& problem) {
    start.set_value(false);
    throw BadInput("cannot start " + std::to_string(count) +
                   " threads: " + problem.code().message());
  } catch (...) {
    start.set_value(false);
    throw;
  }
  start.set_value(true);
}

}  // namespace hcy::tools
