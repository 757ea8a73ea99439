// SPDX-License-Identifier: Apache-2.0
//
// Every operation as a Google Benchmark, with the number of its allocations.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

#include "allocations.h"
#include "operations/operation.h"

namespace {

using hcy::bench::allocationCount;
using hcy::bench::Operation;

// So many at a time that asking whether there are enough costs nothing beside them.
std::int64_t batchOf(const Operation::Repeat& repeat) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::nanoseconds enough = std::chrono::microseconds(20);
  const Clock::time_point start = Clock::now();
  repeat(1);
  const std::int64_t once = std::chrono::nanoseconds(Clock::now() - start).count();
  return std::clamp<std::int64_t>(enough.count() / std::max<std::int64_t>(once, 1), 1, 1'000);
}

void run(benchmark::State& state, const Operation& operation) {
  const Operation::Repeat repeat = operation.prepare();
  repeat(1);
  const std::int64_t batch = batchOf(repeat);
  const std::size_t before = allocationCount();
  while (state.KeepRunningBatch(batch)) repeat(static_cast<std::size_t>(batch));
  state.counters["allocations"] = benchmark::Counter(
      static_cast<double>(allocationCount() - before), benchmark::Counter::kAvgIterations);
  if (operation.bytes > 0) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(operation.bytes));
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const Operation& operation : hcy::bench::allOperations()) {
    benchmark::RegisterBenchmark(operation.name.c_str(),
                                 [operation](benchmark::State& state) { run(state, operation); });
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  benchmark::RunSpecifiedBenchmarks();
}
