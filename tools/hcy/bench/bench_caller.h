// SPDX-License-Identifier: Apache-2.0
//
// One thread of a benchmark.

#pragma once

#include <atomic>
#include <chrono>
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

// What the threads share.
struct Work {
  explicit Work(const Options& options)
      : url(options.url), nargout(options.nargout), calls(options.calls) {}
  const std::string url;
  const int nargout;
  const std::uint64_t calls;
  std::atomic<std::uint64_t> begun = 0, done = 0;
  std::atomic<unsigned> finished = 0;
  std::atomic<bool> isStopped = false;
  std::atomic<Clock::time_point> ended = {};  // when the thread that finished last did
};

class Caller {
 public:
  // Takes copies of the inputs: an array belongs to one thread.
  Caller(std::shared_ptr<Work> work, const hcyclient::Config& config,
         const std::vector<hcyclient::Array>& inputs);

  // Calls until all calls are done, or the work is stopped.
  void run();

  // At any time, by any thread.
  Measurements measured() const;

 private:
  void callOnce();
  void fail(const std::string& kind, int status);

  std::shared_ptr<Work> work_;
  const hcyClientRuntime& runtime_;
  hcyclient::Context context_;
  std::vector<hcyclient::Array> inputs_;
  std::vector<const hcyArray*> handles_;
  std::uint64_t inputBytes_ = 0;
  mutable std::mutex mutex_;  // guards what is below
  Measurements measured_;
};

}  // namespace hcy::tools
