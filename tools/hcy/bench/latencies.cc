// SPDX-License-Identifier: Apache-2.0

#include "bench/latencies.h"

#include <algorithm>
#include <cmath>

namespace hcy::tools {
namespace {

// Of which each power of two has as many.
constexpr std::size_t kRanges = 512;

// counts_[i] is for latencies below 2^(i - kLowest) seconds.
constexpr int kLowest = 40;

}  // namespace

void Latencies::add(double seconds) {
  shortest_ = empty() ? seconds : std::min(shortest_, seconds);
  longest_ = empty() ? seconds : std::max(longest_, seconds);
  ++size_;
  if (exact_.size() < kMostExact) return exact_.push_back(seconds);
  int exponent = 0;
  const double fraction = std::frexp(seconds, &exponent);  // from 0.5 to 1
  const auto range = static_cast<std::size_t>(std::max(0.0, fraction * 2 - 1) * kRanges);
  const int most = static_cast<int>(counts_.size()) - 1;
  auto& counts = counts_[static_cast<std::size_t>(std::clamp(exponent + kLowest, 0, most))];
  if (counts.empty()) counts.resize(kRanges);
  ++counts[range];
}

void Latencies::add(const Latencies& other) {
  if (other.empty()) return;
  shortest_ = empty() ? other.shortest_ : std::min(shortest_, other.shortest_);
  longest_ = std::max(longest_, other.longest_);
  size_ += other.size_;
  exact_.insert(exact_.end(), other.exact_.begin(), other.exact_.end());
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    if (other.counts_[i].empty()) continue;
    counts_[i].resize(kRanges);
    for (std::size_t range = 0; range < kRanges; ++range) {
      counts_[i][range] += other.counts_[i][range];
    }
  }
}

std::vector<Latency> Latencies::sorted() const {
  std::vector<Latency> all;
  for (const double seconds : exact_) all.push_back({seconds, 1});
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    for (std::size_t range = 0; range < counts_[i].size(); ++range) {
      if (counts_[i][range] == 0) continue;
      const double middle = (static_cast<double>(range) + 0.5) / kRanges;
      const double seconds = std::ldexp((1 + middle) / 2, static_cast<int>(i) - kLowest);
      all.push_back({std::clamp(seconds, shortest_, longest_), counts_[i][range]});
    }
  }
  std::sort(all.begin(), all.end(),
            [](const Latency& a, const Latency& b) { return a.seconds < b.seconds; });
  if (!all.empty() && all.front().seconds != shortest_) {
    --all.front().count;
    all.insert(all.begin(), {shortest_, 1});
  }
  if (!all.empty() && all.back().seconds != longest_) {
    --all.back().count;
    all.push_back({longest_, 1});
  }
  return all;
}

double percentile(const std::vector<Latency>& sorted, double fraction) {
  std::uint64_t size = 0;
  for (const Latency& latency : sorted) size += latency.count;
  const auto rank =
      static_cast<std::uint64_t>(std::ceil(fraction * static_cast<double>(size) - 1e-9));
  std::uint64_t passed = 0;
  for (const Latency& latency : sorted) {
    passed += latency.count;
    if (passed >= rank) return latency.seconds;
  }
  return sorted.back().seconds;
}

std::vector<Bucket> histogram(const std::vector<Latency>& sorted) {
  std::vector<Bucket> buckets;
  auto next = sorted.begin();
  for (int exponent = -6; next != sorted.end(); ++exponent) {
    const double power = std::pow(10, exponent);
    for (const double factor : {1.0, 2.0, 5.0}) {
      std::uint64_t count = 0;
      for (; next != sorted.end() && next->seconds <= power * factor; ++next) count += next->count;
      // Without those before the first latency.
      if (count > 0 || !buckets.empty()) buckets.push_back({power * factor, count});
      if (next == sorted.end()) break;
    }
  }
  return buckets;
}

}  // namespace hcy::tools
