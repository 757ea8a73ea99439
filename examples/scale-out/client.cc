// SPDX-License-Identifier: Apache-2.0
//
// Calls math/plus on several threads for a given time, and counts the calls.
//
// Usage: client SERVER_URL THREADS SECONDS

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <hcy/hcyclient.hpp>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

struct Count {
  long calls = 0, failed = 0;
  Milliseconds longest{0};
};

void callUntil(Clock::time_point end, hcyclient::Context context, const std::string& url,
               Count& count) {
  for (auto start = Clock::now(); start < end; start = Clock::now()) {
    ++count.calls;
    try {
      const auto number = static_cast<double>(count.calls);
      if (context.feval(url, {number, 1.0}).at(0).scalar() != number + 1) ++count.failed;
    } catch (const hcyclient::Error& error) {
      ++count.failed;
      std::fprintf(stderr, "call %ld failed: %s\n", count.calls, error.what());
    }
    count.longest = std::max(count.longest, Milliseconds(Clock::now() - start));
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) throw hcyclient::UsageError("usage: client SERVER_URL THREADS SECONDS");
  std::signal(SIGPIPE, SIG_IGN);
  const std::string url = std::string(argv[1]) + "/math/plus";
  const std::chrono::duration<double> time(std::stod(argv[3]));
  const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
  const hcyclient::Library library;
  const hcyclient::Config config(library);
  std::vector<Count> counts(std::stoul(argv[2]));
  std::vector<std::thread> threads;
  for (Count& count : counts) {
    threads.emplace_back(callUntil, end, hcyclient::Context(config), std::cref(url),
                         std::ref(count));
  }
  for (std::thread& thread : threads) thread.join();
  Count sum;
  for (const Count& count : counts) {
    sum.calls += count.calls;
    sum.failed += count.failed;
    sum.longest = std::max(sum.longest, count.longest);
  }
  std::printf("%ld calls on %zu threads, %.0f a second, the longest took %.1f ms, %ld failed\n",
              sum.calls, counts.size(), static_cast<double>(sum.calls) / time.count(),
              sum.longest.count(), sum.failed);
  return sum.failed == 0 ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
