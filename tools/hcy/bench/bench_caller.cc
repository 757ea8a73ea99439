// SPDX-License-Identifier: Apache-2.0

#include "bench/bench_caller.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include "bench/element_bytes.h"
#include "results/evaluation.h"
#include "results/exit_status.h"
#include "results/incomplete_output.h"

namespace hcy::tools {

namespace {

std::uint64_t callsOf(const Options& options) {
  if (options.calls) return *options.calls * (options.against.empty() ? 1 : 2);
  return options.duration > 0 ? std::numeric_limits<std::uint64_t>::max() : kUsualCalls;
}

}  // namespace

Work::Work(const Options& options)
    : urls{options.url},
      limits{fractionalLimit(options.settings.timeout)},
      nargout(options.nargout),
      calls(callsOf(options)),
      warmUps(options.warmUps),
      duration(options.duration),
      rate(options.rate),
      warm(options.threads, StartClock{&start}) {
  if (options.against.empty()) return;
  urls.push_back(options.against);
  limits.push_back(fractionalLimit(options.againstSettings.timeout));
}

Clock::time_point Work::intended(std::uint64_t index) const {
  if (rate <= 0) return Clock::now();
  const std::chrono::duration<double> after(static_cast<double>(index) / rate);
  return start.load() + std::chrono::duration_cast<Clock::duration>(after);
}

bool Work::isOver(Clock::time_point time) const {
  return duration > 0 && std::chrono::duration<double>(time - start.load()).count() >= duration;
}

std::uint64_t Work::missed(std::size_t side, double seconds) const {
  const double time = duration > 0 ? std::min(duration, seconds) : seconds;
  // The product may be a little larger than the whole number that it stands for.
  const double due = std::ceil(rate * time * (1 - 1e-12));
  const auto all = static_cast<std::uint64_t>(std::min(due, static_cast<double>(calls)));
  const std::uint64_t ofSide = (all + urls.size() - 1 - side) / urls.size();
  return ofSide - std::min<std::uint64_t>(ofSide, started[side]);
}

Caller::Caller(std::shared_ptr<Work> work, const hcyclient::Config& config,
               const std::vector<hcyclient::Array>& inputs)
    : work_(std::move(work)), runtime_(*config.runtime()), measured_(work_->urls.size()) {
  add(config);
  for (const hcyclient::Array& input : inputs) {
    inputs_.push_back(input.copy());
    inputBytes_ += elementBytes(input);
  }
  handles_ = handlesOf(inputs_);
}

void Caller::add(const hcyclient::Config& config) { contexts_.emplace_back(config); }

void Caller::warmUp() {
  for (std::uint64_t i = 0; !work_->isStopped && (i = work_->warmed++) < work_->warmUps;) {
    try {
      const std::size_t side = i % contexts_.size();
      evaluate(runtime_, contexts_[side], work_->urls[side], handles_, work_->nargout);
    } catch (const std::exception&) {
      // The measured calls will report it.
    }
  }
  work_->warm.arrive_and_wait();
}

bool Caller::awaitStart(Clock::time_point start) const {
  if (work_->isOver(std::max(start, Clock::now()))) return false;
  std::this_thread::sleep_until(start);
  return !work_->isStopped;
}

void Caller::run() {
  warmUp();
  for (std::uint64_t i = 0; !work_->isStopped && (i = work_->begun++) < work_->calls;) {
    const Clock::time_point start = work_->intended(i);
    if (!awaitStart(start)) break;
    const std::size_t side = i % contexts_.size();
    ++work_->started[side];
    const Clock::time_point began = Clock::now();
    callOrFail(i, start);
    const std::chrono::duration<double> taken = Clock::now() - began;
    ++work_->done;
    const std::lock_guard lock(mutex_);
    measured_[side].busy += taken.count();
  }
  work_->ended = Clock::now();
  ++work_->finished;
}

void Caller::callOrFail(std::uint64_t index, Clock::time_point start) {
  const std::size_t side = index % contexts_.size();
  try {
    callOnce(index, start);
  } catch (const hcyclient::HttpError& error) {
    fail(side, error.what(), kHttpError);
  } catch (const hcyclient::FunctionError& error) {
    const std::string& identifier = error.identifier();
    fail(side, "function error" + (identifier.empty() ? "" : " " + identifier), kFunctionError);
  } catch (const std::exception& error) {
    fail(side, error.what(), kTransportError);
  }
}

void Caller::callOnce(std::uint64_t index, Clock::time_point start) {
  const std::size_t side = index % contexts_.size();
  const auto outputs = evaluateWithin(work_->limits[side], runtime_, contexts_[side],
                                      work_->urls[side], handles_, work_->nargout);
  const std::chrono::duration<double> taken = Clock::now() - start;
  requireWhole(outputs);
  std::uint64_t bytes = 0;
  for (const hcyclient::Array& output : outputs) bytes += elementBytes(output);
  const std::lock_guard lock(mutex_);
  Measurements& measured = measured_[side];
  measured.latencies.add(taken.count());
  measured.bytesSent += inputBytes_;
  measured.bytesReceived += bytes;
}

void Caller::fail(std::size_t side, const std::string& kind, int status) {
  const std::lock_guard lock(mutex_);
  measured_[side].fail(kind, status);
}

Measurements Caller::measured(std::size_t side) const {
  const std::lock_guard lock(mutex_);
  return measured_[side];
}

}  // namespace hcy::tools
