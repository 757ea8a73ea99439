// SPDX-License-Identifier: Apache-2.0
//
// The latencies of any number of calls, in little memory.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace hcy::tools {

// Equal latencies.
struct Latency {
  double seconds;
  std::uint64_t count;
};

// Keeps the first latencies exactly, and counts the others in ranges that are narrower than 0.2
// percent. The shortest and the longest are always exact.
class Latencies {
 public:
  static constexpr std::size_t kMostExact = 4096;

  void add(double seconds);
  void add(const Latencies& other);

  std::uint64_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  // Each with the middle of its range if it is not exact.
  std::vector<Latency> sorted() const;

 private:
  std::uint64_t size_ = 0;
  double shortest_ = 0, longest_ = 0;
  std::vector<double> exact_;
  std::array<std::vector<std::uint64_t>, 64> counts_;  // each up to another power of two, or empty
};

// The smallest latency that `fraction` of the sorted latencies do not exceed. There must be one.
double percentile(const std::vector<Latency>& sorted, double fraction);

// Counts the latencies up to a bound and above the one before. Bounds are 1, 2 or 5 times a power
// of ten seconds.
struct Bucket {
  double bound;
  std::uint64_t count;
};
std::vector<Bucket> histogram(const std::vector<Latency>& sorted);

}  // namespace hcy::tools
