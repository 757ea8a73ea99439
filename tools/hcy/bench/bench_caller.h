// SPDX-License-Identifier: Apache-2.0
//
// One thread of a benchmark.

#pragma once

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "bench/measurements.h"
#include "settings/options.h"

namespace hcy::tools {

using Clock = std::chrono::steady_clock;

// Sets the start of the measurement when all threads have warmed up.
struct StartClock {
  std::atomic<Clock::time_point>* start;
  void operator()() const noexcept { *start = Clock::now(); }
};

// What the threads share.
struct Work {
  explicit Work(const Options& options);

  // When call number `index` is to begin: at once unless there is a rate.
  Clock::time_point intended(std::uint64_t index) const;
  // Whether the time is over for a call that begins then.
  bool isOver(Clock::time_point time) const;
  // How many calls of this URL were due in the first seconds but were not started; 0 without a
  // rate.
  std::uint64_t missed(std::size_t side, double seconds) const;

  std::vector<std::string> urls;  // called in turns
  std::vector<double> limits;     // of each URL, for evaluateWithin()
  const int nargout;
  const std::uint64_t calls, warmUps;
  const double duration, rate;  // seconds and calls per second; 0 for no limit
  std::atomic<std::uint64_t> begun = 0, done = 0, warmed = 0;
  std::array<std::atomic<std::uint64_t>, 2> started = {};  // of each URL
  std::atomic<unsigned> finished = 0;
  std::atomic<bool> isStopped = false;
  std::atomic<Clock::time_point> start = {}, ended = {};  // ended: the thread that finished last
  std::barrier<StartClock> warm;
};

class Caller {
 public:
  // Copies the inputs, so that each thread has its own.
  Caller(std::shared_ptr<Work> work, const hcyclient::Config& config,
         const std::vector<hcyclient::Array>& inputs);

  // The configuration for the next of the URLs, if there is more than one.
  void add(const hcyclient::Config& config);

  // Warms up and waits for the other threads, then calls until all calls are done, the time is over
  // or the work is stopped.
  void run();

  // Of one of the URLs. At any time, by any thread.
  Measurements measured(std::size_t side = 0) const;

 private:
  // Calls the URL whose turn it is; the latency counts from `start`.
  void callOnce(std::uint64_t index, Clock::time_point start);
  void warmUp();
  // The same, and counts a failure.
  void callOrFail(std::uint64_t index, Clock::time_point start);
  void fail(std::size_t side, const std::string& kind, int status);
  // Waits until then, unless the time is over or the work is stopped; returns whether to call.
  bool awaitStart(Clock::time_point start) const;

  std::shared_ptr<Work> work_;
  const hcyClientRuntime& runtime_;
  std::vector<hcyclient::Context> contexts_;
  std::vector<hcyclient::Array> inputs_;
  std::vector<const hcyArray*> handles_;
  std::uint64_t inputBytes_ = 0;
  mutable std::mutex mutex_;  // guards what is below
  std::vector<Measurements> measured_;
};

}  // namespace hcy::tools
