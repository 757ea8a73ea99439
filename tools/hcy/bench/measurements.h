// SPDX-License-Identifier: Apache-2.0
//
// The results of a benchmark.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "bench/latencies.h"

namespace hcy::tools {

struct Measurements {
  Latencies latencies;                             // of the calls that succeeded
  std::uint64_t bytesSent = 0, bytesReceived = 0;  // elements of arrays, of the same calls
  std::map<std::string, std::uint64_t> failures;   // by kind
  int firstFailure = 0;                            // its exit status
  std::uint64_t missed = 0;                        // calls that were due but not started
  double busy = 0;                                 // seconds in calls, those of all threads added

  std::uint64_t failed() const;
  std::uint64_t calls() const { return latencies.size() + failed(); }

  // Counts a failure. The number of kinds is limited, whatever the server sends.
  void fail(const std::string& kind, int status);

  // Adds what another thread has measured.
  void add(const Measurements& other);
};

// The summary of a benchmark. `seconds` is the time that it took.
struct Summary {
  Summary(Measurements measurements, unsigned threadCount, double time);

  // For a person; percentiles only if there are enough calls for them.
  std::string text(bool withHistogram = false) const;
  // One object; latencies in seconds.
  std::string json() const;

  Measurements measured;
  std::vector<Latency> latencies;  // the same, sorted
  unsigned threads;
  double seconds;
};

}  // namespace hcy::tools
