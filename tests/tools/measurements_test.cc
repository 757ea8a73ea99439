// SPDX-License-Identifier: Apache-2.0

#include "bench/measurements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "arguments/argument.h"
#include "bench/element_bytes.h"

namespace hcy::test {
namespace {

using testing::HasSubstr;

TEST(Percentile, isTheSmallestThatSoManyDoNotExceed) {
  std::vector<double> sorted;
  for (int i = 1; i <= 200; ++i) sorted.push_back(i);
  EXPECT_EQ(tools::percentile(sorted, 0.5), 100);
  EXPECT_EQ(tools::percentile(sorted, 0.9), 180);
  EXPECT_EQ(tools::percentile(sorted, 0.99), 198);
  EXPECT_EQ(tools::percentile(sorted, 0.999), 200);
  EXPECT_EQ(tools::percentile({7}, 0.5), 7);
  EXPECT_EQ(tools::percentile({1, 2, 3}, 0.5), 2);
}

TEST(Summary, tellsWhatWasMeasured) {
  tools::Measurements measured;
  for (int i = 1; i <= 10; ++i) measured.latencies.push_back(0.001 * (11 - i));
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
  tools::Measurements measured;
  measured.latencies.assign(9, 0.001);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), HasSubstr("min 1.00  p50 1.00  max 1.00"));
  measured.latencies.assign(999, 0.001);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), HasSubstr("p99 1.00  max"));
  measured.latencies.assign(1000, 0.001);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), HasSubstr("p99.9 1.00  max"));
  measured.latencies.assign(9998, 0.001);
  measured.latencies.resize(9999, 0.003);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), HasSubstr("p99.9 1.00  max 3.00"));
  measured.latencies.resize(10000, 0.003);
  EXPECT_THAT(tools::Summary(measured, 1, 1.0).text(), HasSubstr("p99.99 3.00  max 3.00"));
}

TEST(Summary, isJsonForPrograms) {
  tools::Measurements measured;
  measured.latencies = {0.004, 0.0015, 0.25};
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
  const auto buckets = tools::histogram({1e-6, 1.5e-6, 2e-6, 40.0, 60.0});
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
  measured.latencies = {0.001, 0.0015, 0.002, 0.004};
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
