// SPDX-License-Identifier: Apache-2.0

#include "bench/measurements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "arguments/argument.h"
#include "bench/element_bytes.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

TEST(Percentile, isTheSmallestThatSoManyDoNotExceed) {
  std::vector<tools::Latency> sorted;
  for (int i = 1; i <= 200; ++i) sorted.push_back({static_cast<double>(i), 1});
  EXPECT_EQ(tools::percentile(sorted, 0.5), 100);
  EXPECT_EQ(tools::percentile(sorted, 0.9), 180);
  EXPECT_EQ(tools::percentile(sorted, 0.99), 198);
  EXPECT_EQ(tools::percentile(sorted, 0.999), 200);
  EXPECT_EQ(tools::percentile({{7, 1}}, 0.5), 7);
  EXPECT_EQ(tools::percentile({{1, 1}, {2, 1}, {3, 1}}, 0.5), 2);
  EXPECT_EQ(tools::percentile({{1, 5}, {2, 5}}, 0.5), 1);
  EXPECT_EQ(tools::percentile({{1, 5}, {2, 6}}, 0.5), 2);
}

// So many latencies of 1 ms and of 3 ms.
tools::Measurements measurementsOf(int most, int longest) {
  tools::Measurements measured;
  for (int i = 0; i < most; ++i) measured.latencies.add(0.001);
  for (int i = 0; i < longest; ++i) measured.latencies.add(0.003);
  return measured;
}

TEST(Latencies, areRoundedWhenThereAreMany) {
  tools::Latencies all;
  std::vector<double> exact;
  std::mt19937 random(3);
  for (int i = 0; i < 50000; ++i) {
    exact.push_back(std::pow(10, -7 + 9 * static_cast<double>(random()) / std::mt19937::max()));
    all.add(exact.back());
  }
  tools::Latencies twice = all;
  twice.add(all);
  EXPECT_EQ(twice.size(), 100000U);
  std::sort(exact.begin(), exact.end());
  for (const tools::Latencies& one : {all, twice}) {
    const std::vector<tools::Latency> sorted = one.sorted();
    EXPECT_LT(sorted.size(), 30000U);
    EXPECT_EQ(sorted.front().seconds, exact.front());
    EXPECT_EQ(sorted.back().seconds, exact.back());
    for (const double fraction : {0.01, 0.5, 0.9, 0.999, 0.9999}) {
      const double expected = exact[static_cast<std::size_t>(fraction * 50000) - 1];
      EXPECT_NEAR(tools::percentile(sorted, fraction), expected, expected * 0.001) << fraction;
    }
  }
}

TEST(Latencies, oddOnesAreCounted) {
  tools::Latencies all;
  for (std::size_t i = 0; i < tools::Latencies::kMostExact; ++i) all.add(1);
  for (const double seconds : {0.0, 1e-300, 1e300, 0.5, 0.99999999}) all.add(seconds);
  std::uint64_t count = 0;
  for (const tools::Latency& latency : all.sorted()) count += latency.count;
  EXPECT_EQ(count, all.size());
  EXPECT_EQ(all.sorted().back().seconds, 1e300);
}

TEST(Summary, tellsWhatWasMeasured) {
  tools::Measurements measured;
  for (int i = 1; i <= 10; ++i) measured.latencies.add(0.001 * (11 - i));
  measured.bytesSent = 3000000;
  measured.bytesReceived = 500;
  tools::Measurements other;
  other.fail("HTTP status 404 Not Found", 2);
  other.fail("Timeout was reached", 3);
  other.fail("HTTP status 404 Not Found", 2);
  other.missed = 1;
  measured.add(other);
  EXPECT_EQ(measured.calls(), 13U);
  EXPECT_EQ(measured.firstFailure, 2);
  EXPECT_EQ("\n" + tools::Summary(measured, 2, 2.0).text(), R"(
calls     13 on 2 threads in 2.000 s
rate      6.50 calls/s
missed    1 call was due but not started
data      1.50 MB/s sent, 250 B/s received
latency   min 1.00  p50 5.00  p90 9.00  max 10.0  ms
failures  3
  2  HTTP status 404 Not Found
  1  Timeout was reached
)");
}

TEST(Summary, showsPercentilesThatThereAreEnoughCallsFor) {
  const auto shown = [](int most, int longest = 0) {
    return tools::Summary(measurementsOf(most, longest), 1, 1.0).text();
  };
  EXPECT_THAT(shown(9), HasSubstr("min 1.00  p50 1.00  max 1.00"));
  EXPECT_THAT(shown(999), HasSubstr("p99 1.00  max"));
  EXPECT_THAT(shown(1000), HasSubstr("p99.9 1.00  max"));
  EXPECT_THAT(shown(9998, 1), HasSubstr("p99.9 1.00  max 3.00"));
  EXPECT_THAT(shown(9998, 2), HasSubstr("p99.9 1.00  p99.99 3.00  max 3.00"));
}

TEST(Summary, isJsonForPrograms) {
  tools::Measurements measured;
  for (const double seconds : {0.004, 0.0015, 0.25}) measured.latencies.add(seconds);
  measured.bytesSent = 8;
  measured.fail("odd \xFF\"", 3);
  measured.missed = 3;
  EXPECT_EQ(
      tools::Summary(measured, 2, 2).json(),
      "{\"calls\":4,\"failed\":1,\"threads\":2,\"seconds\":2,\"rate\":2,\"missed\":3,"
      "\"bytesSent\":8,"
      "\"bytesReceived\":0,\"latency\":{\"min\":0.0015,\"p50\":0.004,\"max\":0.25},"
      "\"histogram\":[[0.002,1],[0.005,1],[0.01,0],[0.02,0],[0.05,0],[0.1,0],[0.2,0],[0.5,1]],"
      "\"failures\":{\"odd \uFFFD\\\"\":1}}");
  EXPECT_THAT(tools::Summary({}, 1, 0).json(), HasSubstr("\"latency\":{},\"histogram\":[],"));
}

TEST(Histogram, countsEachLatencyOnce) {
  const auto buckets = tools::histogram({{1e-6, 1}, {1.5e-6, 1}, {2e-6, 1}, {40.0, 1}, {60.0, 1}});
  EXPECT_EQ(buckets.front().bound, 1e-6);
  EXPECT_EQ(buckets.front().count, 1U);
  EXPECT_EQ(buckets[1].count, 2U);
  EXPECT_NEAR(buckets.back().bound, 100, 1e-6);
  std::uint64_t sum = 0;
  for (const auto& bucket : buckets) sum += bucket.count;
  EXPECT_EQ(sum, 5U);
}

TEST(Histogram, isShownIfItIsAskedFor) {
  tools::Measurements measured;
  for (const double seconds : {0.001, 0.0015, 0.002, 0.004}) measured.latencies.add(seconds);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(true),
              HasSubstr("\nhistogram <=       1 ms          1  ####################\n"
                        "          <=       2 ms          2  "
                        "########################################\n"));
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), testing::Not(HasSubstr("histogram")));
}

TEST(Summary, saysThatNothingSucceeded) {
  EXPECT_THAT(tools::Summary({}, 1, 0.0).text(), HasSubstr("latency   no call succeeded\n"));
}

TEST(Summary, aKindOfSeveralLinesStaysTogether) {
  tools::Measurements measured;
  measured.fail("Failed writing\nIt may be\x1B[2J too large.", 3);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(),
              HasSubstr("\n  1  Failed writing\n     It may be\\u001b[2J too large.\n"));
}

TEST(Measurements, kindsThatAServerInventsAreCountedTogether) {
  tools::Measurements measured;
  for (int i = 0; i < 1000; ++i) measured.fail("kind " + std::to_string(i), 1);
  EXPECT_EQ(measured.failures.size(), 21U);
  EXPECT_EQ(measured.failures.at("other failures"), 980U);
  EXPECT_EQ(measured.failed(), 1000U);
  measured.fail("kind 0", 1);
  EXPECT_EQ(measured.failures.at("kind 0"), 2U);
}

std::uint64_t bytesOf(const std::string& argument) {
  return tools::elementBytes(tools::arraysFrom({argument})[0]);
}

TEST(ElementBytes, ofEveryKindOfArray) {
  EXPECT_EQ(bytesOf("[1,2,3]"), 24U);
  EXPECT_EQ(bytesOf("complex:{\"re\":1,\"im\":2}"), 16U);
  EXPECT_EQ(bytesOf("int16:[1,2,3]"), 6U);
  EXPECT_EQ(bytesOf("\"text\""), 8U);
  EXPECT_EQ(bytesOf(R"([1,"text",{"a":true,"b":[1,2]}])"), 8U + 8 + 1 + 16);
  EXPECT_EQ(bytesOf(R"(sparse:{"rows":3,"cols":2,"entries":[[0,0,1],[1,1,1]]})"), 2 * 16U + 3 * 8);
  EXPECT_EQ(bytesOf("[{},{}]"), 0U);
}

}  // namespace
}  // namespace hcy::test
