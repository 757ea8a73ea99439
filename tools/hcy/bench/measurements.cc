// SPDX-License-Identifier: Apache-2.0

#include "bench/measurements.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr std::size_t kMostKinds = 20;
const char* const kOtherKinds = "other failures";

std::string fixed(double value, int digits) {
  std::array<char, 64> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "%.*f", digits, value));
  return text.data();
}

// With three significant digits, or all those before the point.
std::string rounded(double value) {
  return fixed(value, value < 9.995 ? 2 : value < 99.95 ? 1 : 0);
}

std::string rate(double bytes, double seconds) {
  constexpr std::array<const char*, 4> units = {"B/s", "kB/s", "MB/s", "GB/s"};
  double value = seconds > 0 ? bytes / seconds : 0;
  std::size_t unit = 0;
  for (; value >= 999.5 && unit + 1 < units.size(); ++unit) value /= 1000;
  return rounded(value) + " " + units[unit];
}

std::string line(const std::string& name, const std::string& text) {
  return name + std::string(10 - name.size(), ' ') + text + "\n";
}

std::string latencyLine(std::vector<double>& latencies) {
  if (latencies.empty()) return line("latency", "no call succeeded");
  std::sort(latencies.begin(), latencies.end());
  std::string text = "min " + rounded(latencies.front() * 1e3);
  for (const auto& [name, fraction] :
       {std::pair{"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"p99.9", 0.999}}) {
    text += std::string("  ") + name + " " + rounded(percentile(latencies, fraction) * 1e3);
  }
  return line("latency", text + "  max " + rounded(latencies.back() * 1e3) + "  ms");
}

}  // namespace

std::uint64_t Measurements::failed() const {
  std::uint64_t sum = 0;
  for (const auto& [kind, count] : failures) sum += count;
  return sum;
}

void Measurements::fail(const std::string& kind, int status) {
  if (firstFailure == 0) firstFailure = status;
  const bool isKnown = failures.count(kind) > 0 || failures.size() < kMostKinds;
  ++failures[isKnown ? kind : kOtherKinds];
}

void Measurements::add(const Measurements& other) {
  latencies.insert(latencies.end(), other.latencies.begin(), other.latencies.end());
  bytesSent += other.bytesSent;
  bytesReceived += other.bytesReceived;
  if (firstFailure == 0) firstFailure = other.firstFailure;
  for (const auto& [kind, count] : other.failures) failures[kind] += count;
}

double percentile(const std::vector<double>& sorted, double fraction) {
  const auto rank =
      static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(sorted.size()) - 1e-9));
  return sorted[std::min(std::max<std::size_t>(rank, 1), sorted.size()) - 1];
}

std::string summary(Measurements measurements, unsigned threads, double seconds) {
  const auto calls = static_cast<double>(measurements.calls());
  std::string text = line(
      "calls", std::to_string(measurements.calls()) + " on " + std::to_string(threads) +
                   (threads == 1 ? " thread" : " threads") + " in " + fixed(seconds, 3) + " s");
  text += line("rate", rounded(seconds > 0 ? calls / seconds : 0) + " calls/s");
  text += line("data", rate(static_cast<double>(measurements.bytesSent), seconds) + " sent, " +
                           rate(static_cast<double>(measurements.bytesReceived), seconds) +
                           " received");
  text += latencyLine(measurements.latencies);
  text += line("failures",
               measurements.failures.empty() ? "none" : std::to_string(measurements.failed()));
  for (const auto& [kind, count] : measurements.failures) {
    const std::string start = "  " + std::to_string(count) + "  ";
    text += start + printableLines(kind, start.size()) + "\n";
  }
  return text;
}

}  // namespace hcy::tools
