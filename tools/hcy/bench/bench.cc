// SPDX-License-Identifier: Apache-2.0

#include "bench/bench.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "arguments/argument.h"
#include "bench/bench_caller.h"
#include "bench/measurements.h"
#include "calls/exit_status.h"
#include "output/progress_bar.h"
#include "output/terminal.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/source_text.h"

namespace hcy::tools {
namespace {

using namespace std::chrono_literals;

// The threads of a benchmark.
class Callers {
 public:
  Callers(const Options& options, const hcyclient::Config& config,
          const std::vector<hcyclient::Array>& inputs)
      : work_(std::make_shared<Work>(options)) {
    for (unsigned i = 0; i < options.threads; ++i) {
      callers_.push_back(std::make_shared<Caller>(work_, config, inputs));
    }
  }
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;
  ~Callers() {
    stop();
    for (std::thread& thread : threads_) thread.join();
  }

  void start() {
    start_ = Clock::now();
    for (const auto& caller : callers_) {
      threads_.emplace_back([caller] { caller->run(); });
    }
  }
  void stop() { work_->isStopped = true; }
  std::uint64_t done() const { return work_->done; }
  bool areFinished() const { return work_->finished == callers_.size(); }

  // From the start to now, or to the end of the last call.
  double seconds() const {
    const Clock::time_point end = areFinished() ? work_->ended.load() : Clock::now();
    return std::chrono::duration<double>(end - start_).count();
  }

  Measurements measured() const {
    Measurements all;
    for (const auto& caller : callers_) all.add(caller->measured());
    return all;
  }

 private:
  std::shared_ptr<Work> work_;
  Clock::time_point start_;
  std::vector<std::shared_ptr<Caller>> callers_;
  std::vector<std::thread> threads_;
};

// Waits so long, or until the interrupt key is pressed; says whether it was.
bool isInterruptedWithin(const sigset_t& interrupt, std::chrono::milliseconds time) {
  const timespec limit{0, std::chrono::nanoseconds(time).count()};
  return ::sigtimedwait(&interrupt, nullptr, &limit) == SIGINT;
}

// Until all calls are done; says how long they took.
double awaitEnd(const Callers& callers, std::uint64_t calls, const sigset_t& interrupt) {
  ProgressBar bar(calls);
  Clock::time_point drawn = Clock::now();
  while (!callers.areFinished() && !isInterruptedWithin(interrupt, 5ms)) {
    if (Clock::now() - drawn < 100ms) continue;
    drawn = Clock::now();
    bar.show(callers.done(), callers.seconds());
  }
  return callers.seconds();
}

// Shows the summary; returns the exit status.
int report(const Measurements& measured, unsigned threads, double seconds) {
  try {
    print(summary(measured, threads, seconds));
    return measured.firstFailure;
  } catch (const std::system_error& error) {
    std::cerr << "hcy: " << error.what() << '\n';
    return kTransportError;
  }
}

}  // namespace

int bench(const Options& options) {
  requireHttp(options.url);
  const double timeout = options.settings.timeout.value_or(0);
  if (timeout != std::trunc(timeout)) {
    throw BadInput("only a single call can be limited to a fraction of a second");
  }
  const std::vector<hcyclient::Array> inputs =
      arraysFrom(options.arguments, options.argumentSettings);
  const hcyclient::Library library;
  const hcyclient::Config config = configFrom(library, options.settings);
  // Transfers at once leave the action for it to chance.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  // Threads inherit the mask: the signal waits for this one.
  sigset_t interrupt{};
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);

  Callers callers(options, config, inputs);
  callers.start();
  const double seconds = awaitEnd(callers, options.calls, interrupt);
  callers.stop();
  const int status = report(callers.measured(), options.threads, seconds);
  // A call that is under way may take long, and nobody waits for its end.
  if (!callers.areFinished()) ::_exit(status);
  return status;
}

}  // namespace hcy::tools
