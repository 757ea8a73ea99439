// SPDX-License-Identifier: Apache-2.0

#include "bench/measurements.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "notations/element_json.h"
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

// With three significant digits, or all digits before the point.
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

struct Percentile {
  const char* name;
  double fraction;
  std::size_t fewest;  // with fewer calls it would be the longest latency
};
constexpr std::array<Percentile, 5> kPercentiles = {{{"p50", 0.5, 1},
                                                     {"p90", 0.9, 10},
                                                     {"p99", 0.99, 100},
                                                     {"p99.9", 0.999, 1000},
                                                     {"p99.99", 0.9999, 10000}}};

// The percentiles for which there are enough latencies, in seconds.
std::vector<std::pair<std::string, double>> latencyNumbers(const Summary& summary) {
  const std::vector<Latency>& sorted = summary.latencies;
  std::vector<std::pair<std::string, double>> numbers = {{"min", sorted.front().seconds}};
  for (const Percentile& one : kPercentiles) {
    if (summary.measured.latencies.size() >= one.fewest)
      numbers.emplace_back(one.name, percentile(sorted, one.fraction));
  }
  numbers.emplace_back("max", sorted.back().seconds);
  return numbers;
}

std::string latencyLine(const Summary& summary) {
  if (summary.latencies.empty()) return line("latency", "no call succeeded");
  std::string text;
  for (const auto& [name, seconds] : latencyNumbers(summary)) {
    text += (text.empty() ? "" : "  ") + name + " " + rounded(seconds * 1e3);
  }
  return line("latency", text + "  ms");
}

std::string histogramLines(const std::vector<Latency>& sorted) {
  constexpr std::uint64_t longest = 40;
  const std::vector<Bucket> buckets = histogram(sorted);
  std::uint64_t most = 1;
  for (const Bucket& bucket : buckets) most = std::max(most, bucket.count);
  std::string text;
  for (const Bucket& bucket : buckets) {
    std::array<char, 64> start{};
    static_cast<void>(std::snprintf(start.data(), start.size(), "%-10s<= %7g ms  %9llu  ",
                                    text.empty() ? "histogram" : "", bucket.bound * 1e3,
                                    static_cast<unsigned long long>(bucket.count)));
    std::string one = start.data() + std::string((bucket.count * longest + most - 1) / most, '#');
    one.erase(one.find_last_not_of(' ') + 1);
    text += one + "\n";
  }
  return text;
}

std::string number(double value) {
  std::string text;
  appendElement(text, value);
  return text;
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
  latencies.add(other.latencies);
  bytesSent += other.bytesSent;
  bytesReceived += other.bytesReceived;
  if (firstFailure == 0) firstFailure = other.firstFailure;
  missed += other.missed;
  busy += other.busy;
  for (const auto& [kind, count] : other.failures) failures[kind] += count;
}

Summary::Summary(Measurements measurements, unsigned threadCount, double time)
    : measured(std::move(measurements)),
      latencies(measured.latencies.sorted()),
      threads(threadCount),
      seconds(time) {}

std::string Summary::text(bool withHistogram) const {
  const auto calls = static_cast<double>(measured.calls());
  std::string text = line(
      "calls", std::to_string(measured.calls()) + " on " + std::to_string(threads) +
                   (threads == 1 ? " thread" : " threads") + " in " + fixed(seconds, 3) + " s");
  text += line("rate", rounded(seconds > 0 ? calls / seconds : 0) + " calls/s");
  if (measured.missed > 0) {
    text += line("missed", std::to_string(measured.missed) +
                               (measured.missed == 1 ? " call was" : " calls were") +
                               " due but not started");
  }
  text +=
      line("data", rate(static_cast<double>(measured.bytesSent), seconds) + " sent, " +
                       rate(static_cast<double>(measured.bytesReceived), seconds) + " received");
  text += latencyLine(*this);
  if (withHistogram) text += histogramLines(latencies);
  text += line("failures", measured.failures.empty() ? "none" : std::to_string(measured.failed()));
  for (const auto& [kind, count] : measured.failures) {
    const std::string start = "  " + std::to_string(count) + "  ";
    text += start + printableLines(kind, start.size()) + "\n";
  }
  return text;
}

std::string Summary::json() const {
  const auto calls = static_cast<double>(measured.calls());
  std::string json = "{\"calls\":" + std::to_string(measured.calls()) +
                     ",\"failed\":" + std::to_string(measured.failed()) +
                     ",\"threads\":" + std::to_string(threads) + ",\"seconds\":" + number(seconds) +
                     ",\"rate\":" + number(seconds > 0 ? calls / seconds : 0) +
                     ",\"missed\":" + std::to_string(measured.missed) +
                     ",\"bytesSent\":" + std::to_string(measured.bytesSent) +
                     ",\"bytesReceived\":" + std::to_string(measured.bytesReceived) +
                     ",\"latency\":{";
  if (!latencies.empty()) {
    for (const auto& [name, value] : latencyNumbers(*this)) {
      json += (json.back() == '{' ? "\"" : ",\"") + name + "\":" + number(value);
    }
  }
  json += "},\"histogram\":[";
  for (const Bucket& bucket : histogram(latencies)) {
    json += (json.back() == '[' ? "[" : ",[") + number(bucket.bound) + "," +
            std::to_string(bucket.count) + "]";
  }
  json += "],\"failures\":{";
  for (const auto& [kind, count] : measured.failures) {
    json += (json.back() == '{' ? "" : ",") + quotedValid(kind) + ":" + std::to_string(count);
  }
  return json + "}}";
}

}  // namespace hcy::tools
