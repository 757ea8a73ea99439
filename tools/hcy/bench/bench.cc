// SPDX-License-Identifier: Apache-2.0

#include "bench/bench.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "arguments/argument.h"
#include "bench/bench_caller.h"
#include "bench/measurements.h"
#include "calls/broken_pipe.h"
#include "calls/shown_url.h"
#include "calls/similar_function.h"
#include "calls/threads.h"
#include "output/progress_bar.h"
#include "output/terminal.h"
#include "results/failure.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using namespace std::chrono_literals;

// The threads of a benchmark.
class Callers {
 public:
  // A configuration for each of the URLs.
  Callers(const Options& options, const std::vector<hcyclient::Config>& configs,
          const std::vector<hcyclient::Array>& inputs)
      : work_(std::make_shared<Work>(options)) {
    for (unsigned i = 0; i < options.threads; ++i) {
      callers_.push_back(std::make_unique<Caller>(work_, configs.front(), inputs));
      if (configs.size() > 1) callers_.back()->add(configs.back());
    }
  }
  Callers(const Callers&) = delete;
  Callers& operator=(const Callers&) = delete;
  ~Callers() { stop(); }

  // Throws BadInput if there cannot be so many threads.
  void start() {
    threads_.emplace(static_cast<unsigned>(callers_.size()),
                     [this](unsigned i) { callers_[i]->run(); });
  }
  void stop() { work_->isStopped = true; }
  std::uint64_t done() const { return work_->done; }
  // The total, or 0 if only the time ends them.
  std::uint64_t calls() const {
    return work_->calls == std::numeric_limits<std::uint64_t>::max() ? 0 : work_->calls;
  }
  bool areFinished() const { return work_->finished == callers_.size(); }

  // From the end of warming up to now, or to the end of the last call; 0 before.
  double seconds() const {
    if (work_->start.load() == Clock::time_point()) return 0;
    const Clock::time_point end = areFinished() ? work_->ended.load() : Clock::now();
    return std::chrono::duration<double>(end - work_->start.load()).count();
  }

  // Of one of the URLs, in the first seconds.
  Measurements measured(std::size_t side, double seconds) const {
    Measurements all;
    for (const auto& caller : callers_) all.add(caller->measured(side));
    all.missed = work_->missed(side, seconds);
    return all;
  }

 private:
  std::shared_ptr<Work> work_;
  std::vector<std::unique_ptr<Caller>> callers_;
  std::optional<Threads> threads_;
};

// Waits for this time, or until the interrupt key is pressed; returns whether it was.
bool isInterruptedWithin(const sigset_t& interrupt, std::chrono::milliseconds time) {
  const timespec limit{0, std::chrono::nanoseconds(time).count()};
  return ::sigtimedwait(&interrupt, nullptr, &limit) == SIGINT;
}

// Waits until all calls are done; returns how many seconds they took.
double awaitEnd(const Callers& callers, const sigset_t& interrupt) {
  ProgressBar bar(callers.calls());
  Clock::time_point drawn = Clock::now();
  while (!callers.areFinished() && !isInterruptedWithin(interrupt, 5ms)) {
    if (Clock::now() - drawn < 100ms) continue;
    drawn = Clock::now();
    bar.show(callers.done(), callers.seconds());
  }
  return callers.seconds();
}

std::string textOf(const Summary& summary, const Options& options) {
  return options.isJson() ? summary.json() + "\n" : summary.text(options.showsHistogram);
}

// The summaries of both URLs, and the ratio of their median latencies.
std::string comparison(const Summary& a, const Summary& b, const Options& options) {
  if (options.isJson()) return "{\"a\":" + a.json() + ",\"b\":" + b.json() + "}\n";
  std::string text = "A         " + shownUrl(options.url) + "\n" + textOf(a, options) +
                     "B         " + shownUrl(options.against) + "\n" + textOf(b, options);
  if (a.latencies.empty() || b.latencies.empty()) return text;
  std::array<char, 64> ratio{};
  static_cast<void>(std::snprintf(ratio.data(), ratio.size(), "B to A    p50 %.3f\n",
                                  percentile(b.latencies, 0.5) / percentile(a.latencies, 0.5)));
  return text + ratio.data();
}

// Calls to two URLs share the threads: the time of each URL is that of its calls.
Summary summaryOfSide(Measurements measured, unsigned threads) {
  const double seconds = measured.busy / threads;
  return {std::move(measured), threads, seconds};
}

// Shows the summary; returns the exit status.
int report(const Callers& callers, const Options& options, double seconds,
           const IgnoredBrokenPipes& pipes) {
  try {
    if (options.against.empty()) {
      const Summary all(callers.measured(0, seconds), options.threads, seconds);
      print(textOf(all, options));
      return all.measured.firstFailure;
    }
    const Summary a = summaryOfSide(callers.measured(0, seconds), options.threads);
    const Summary b = summaryOfSide(callers.measured(1, seconds), options.threads);
    print(comparison(a, b, options));
    return a.measured.firstFailure != 0 ? a.measured.firstFailure : b.measured.firstFailure;
  } catch (const std::system_error& problem) {
    pipes.endIfBroken(problem);
    const Failure failure = currentFailure();
    std::cerr << failureAs(options.isJson(), failure);
    return failure.exitStatus;
  }
}

// Shows which function the user may have meant if the server does not know the URL's.
void suggestFunction(const Callers& callers, const Options& options, hcyclient::Config& config) {
  if (options.isJson()) return;
  for (const auto& [kind, count] : callers.measured(0, 0).failures) {
    if (!kind.starts_with("HTTP status 404")) continue;
    const double limit = options.settings.timeout.value_or(0);
    const std::string suggestion = functionSuggestion(config, options.url, limit);
    if (!suggestion.empty()) std::cerr << "hcy: " << printable(kind) << suggestion << '\n';
  }
}

}  // namespace

int bench(const Options& options) {
  requireHttp(options.url);
  const std::vector<hcyclient::Array> inputs =
      arraysFrom(options.arguments, options.argumentSettings);
  const hcyclient::Library library;
  std::vector<hcyclient::Config> configs;
  configs.push_back(configFrom(library, options.settings));
  if (!options.against.empty()) {
    requireHttp(options.against);
    configs.push_back(configFrom(library, options.againstSettings));
  }
  const IgnoredBrokenPipes pipes;
  // Threads inherit the mask: the signal waits for this one.
  sigset_t interrupt{};
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);

  Callers callers(options, configs, inputs);
  callers.start();
  const double seconds = awaitEnd(callers, interrupt);
  callers.stop();
  const int status = report(callers, options, seconds, pipes);
  if (callers.areFinished()) suggestFunction(callers, options, configs.front());
  // A call in progress may take long; do not wait for its end.
  if (!callers.areFinished()) ::_exit(status);
  return status;
}

}  // namespace hcy::tools
