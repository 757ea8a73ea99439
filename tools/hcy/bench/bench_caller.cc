// SPDX-License-Identifier: Apache-2.0

#include "bench/bench_caller.h"

#include <exception>
#include <utility>

#include "bench/element_bytes.h"
#include "calls/evaluation.h"
#include "calls/exit_status.h"
#include "calls/incomplete_output.h"

namespace hcy::tools {

Caller::Caller(std::shared_ptr<Work> work, const hcyclient::Config& config,
               const std::vector<hcyclient::Array>& inputs)
    : work_(std::move(work)), runtime_(*config.runtime()), context_(config) {
  for (const hcyclient::Array& input : inputs) {
    inputs_.push_back(input.copy());
    inputBytes_ += elementBytes(input);
  }
  handles_ = handlesOf(inputs_);
}

void Caller::run() {
  while (!work_->isStopped && work_->begun++ < work_->calls) {
    try {
      callOnce();
    } catch (const hcyclient::HttpError& error) {
      fail(error.what(), kHttpError);
    } catch (const hcyclient::FunctionError& error) {
      const std::string& identifier = error.identifier();
      fail("function error" + (identifier.empty() ? "" : " " + identifier), kFunctionError);
    } catch (const std::exception& error) {
      fail(error.what(), kTransportError);
    }
    ++work_->done;
  }
  work_->ended = Clock::now();
  ++work_->finished;
}

void Caller::callOnce() {
  const Clock::time_point start = Clock::now();
  const auto outputs = evaluate(runtime_, context_, work_->url, handles_, work_->nargout);
  const std::chrono::duration<double> taken = Clock::now() - start;
  requireWhole(outputs);
  std::uint64_t bytes = 0;
  for (const hcyclient::Array& output : outputs) bytes += elementBytes(output);
  const std::lock_guard lock(mutex_);
  measured_.latencies.push_back(taken.count());
  measured_.bytesSent += inputBytes_;
  measured_.bytesReceived += bytes;
}

void Caller::fail(const std::string& kind, int status) {
  const std::lock_guard lock(mutex_);
  measured_.fail(kind, status);
}

Measurements Caller::measured() const {
  const std::lock_guard lock(mutex_);
  return measured_;
}

}  // namespace hcy::tools
