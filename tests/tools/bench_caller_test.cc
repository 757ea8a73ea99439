// SPDX-License-Identifier: Apache-2.0

#include "bench/bench_caller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "arguments/argument.h"
#include "results/exit_status.h"
#include "support/local_server.h"

namespace hcy::test {
namespace {

using testing::AllOf;
using testing::Ge;
using testing::Lt;
using testing::SizeIs;

// Calls functions of a server of its own.
class CallerTest : public testing::Test {
 protected:
  std::shared_ptr<tools::Work> work(const std::string& function, std::uint64_t calls) const {
    tools::Options options;
    options.url = server_.url(function);
    options.calls = calls;
    options.nargout = nargout_;
    return std::make_shared<tools::Work>(options);
  }

  tools::Measurements measured(const std::shared_ptr<tools::Work>& work,
                               const std::vector<std::string>& arguments) const {
    tools::Caller caller(work, hcyclient::Config(library_), tools::arraysFrom(arguments));
    caller.run();
    return caller.measured();
  }

  const LocalServer server_;
  const hcyclient::Library library_;
  int nargout_ = 1;
};

TEST_F(CallerTest, latenciesAreSecondsOfOneCall) {
  const auto found = measured(work("/demo/sleep", 3), {"0.05"});
  EXPECT_EQ(found.latencies.size(), 3U);
  EXPECT_GE(found.latencies.sorted().front().seconds, 0.05);
  EXPECT_LT(found.latencies.sorted().back().seconds, 10);
  EXPECT_EQ(found.failed(), 0U);
}

TEST_F(CallerTest, bytesAreThoseOfAllInputsAndOutputs) {
  nargout_ = 3;
  const auto found = measured(work("/linalg/svd", 4), {"[[3,0],[0,4],[1,1]]"});
  EXPECT_EQ(found.bytesSent, 4U * 6 * 8);
  EXPECT_EQ(found.bytesReceived, 4U * (6 + 4 + 4) * 8);
}

TEST_F(CallerTest, failuresAreNoLatenciesAndNoBytes) {
  const auto http = measured(work("/no/such/function", 2), {"1"});
  EXPECT_EQ(http.failures.at("HTTP status 404 Not Found"), 2U);
  EXPECT_EQ(http.firstFailure, tools::kHttpError);
  EXPECT_THAT(http.latencies, SizeIs(0));
  EXPECT_EQ(http.bytesSent + http.bytesReceived, 0U);

  const auto function = measured(work("/demo/fail", 2), {"\"a:b\"", "\"message\""});
  EXPECT_EQ(function.failures.at("function error a:b"), 2U);
  EXPECT_EQ(function.firstFailure, tools::kFunctionError);
  const auto nameless = measured(work("/demo/fail", 1), {"\"\"", "\"message\""});
  EXPECT_EQ(nameless.failures.at("function error"), 1U);
}

TEST_F(CallerTest, callersShareTheCallsAndSayWhenTheyAreDone) {
  const auto shared = work("/echo", 5);
  EXPECT_THAT(measured(shared, {"1"}).latencies, SizeIs(5));
  EXPECT_EQ(shared->finished, 1U);
  EXPECT_THAT(measured(shared, {"1"}).latencies, SizeIs(0));
  EXPECT_EQ(shared->finished, 2U);
  EXPECT_EQ(shared->done, 5U);
}

TEST_F(CallerTest, whatWarmsUpIsNotMeasured) {
  tools::Options options;
  options.url = server_.url("/echo");
  options.calls = 3;
  options.warmUps = 4;
  const auto shared = std::make_shared<tools::Work>(options);
  EXPECT_THAT(measured(shared, {"1"}).latencies, SizeIs(3));
  EXPECT_GE(shared->warmed, 4U);
}

TEST_F(CallerTest, theDurationEndsTheCalls) {
  tools::Options options;
  options.url = server_.url("/demo/sleep");
  options.duration = 0.2;
  const auto shared = std::make_shared<tools::Work>(options);
  EXPECT_THAT(measured(shared, {"0.05"}).latencies, SizeIs(AllOf(Ge(1U), Lt(6U))));
}

TEST_F(CallerTest, theDurationEndsTheCallsThatAreDueTo) {
  tools::Options options;
  options.url = server_.url("/demo/sleep");
  options.duration = 0.3;
  options.rate = 200;
  const auto shared = std::make_shared<tools::Work>(options);
  const auto found = measured(shared, {"0.1"});
  EXPECT_THAT(found.latencies, SizeIs(AllOf(Ge(1U), Lt(4U))));
  EXPECT_GE(found.busy, 0.1 * static_cast<double>(found.calls()));
  EXPECT_EQ(shared->missed(0, 10), 60 - found.calls());
  EXPECT_EQ(shared->missed(0, 0.1), 20 - found.calls());  // if it had been interrupted then
}

TEST_F(CallerTest, noCallIsMissedThatIsNotDue) {
  tools::Options options;
  options.url = server_.url("/echo");
  options.against = options.url;
  options.rate = 100;
  options.duration = 0.07;  // times the rate, this is a little more than 7
  const tools::Work work(options);
  EXPECT_EQ(work.missed(0, 1), 4U);
  EXPECT_EQ(work.missed(1, 1), 3U);
  options.calls = 2;
  EXPECT_EQ(tools::Work(options).missed(1, 1), 2U);
  options.rate = 0;
  EXPECT_EQ(tools::Work(options).missed(0, 1), 0U);
}

TEST_F(CallerTest, allThatIsDueIsCalled) {
  tools::Options options;
  options.url = server_.url("/echo");
  options.duration = 0.8;
  options.rate = 5;
  const auto shared = std::make_shared<tools::Work>(options);
  EXPECT_THAT(measured(shared, {"1"}).latencies, SizeIs(4));
  EXPECT_EQ(shared->missed(0, 1), 0U);
}

TEST_F(CallerTest, atARateLatenciesCountFromTheIntendedStart) {
  tools::Options options;
  options.url = server_.url("/demo/sleep");
  options.calls = 4;
  options.rate = 1000;
  const auto shared = std::make_shared<tools::Work>(options);
  const auto found = measured(shared, {"0.05"}).latencies.sorted();
  ASSERT_THAT(found, SizeIs(4));
  // Each has waited for those before it.
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_GE(found[i].seconds, 0.05 * static_cast<double>(i + 1) - 0.001 * static_cast<double>(i))
        << i;
  }
}

TEST_F(CallerTest, atARateCallsBeginNoEarlier) {
  tools::Options options;
  options.url = server_.url("/echo");
  options.calls = 5;
  options.rate = 50;
  const auto shared = std::make_shared<tools::Work>(options);
  EXPECT_THAT(measured(shared, {"1"}).latencies, SizeIs(5));
  EXPECT_GE(shared->ended.load() - shared->start.load(), std::chrono::milliseconds(80));
}

TEST_F(CallerTest, twoUrlsAreCalledInTurns) {
  tools::Options options;
  options.url = server_.url("/echo");
  options.against = server_.url("/no/such/function");
  options.calls = 3;
  const auto shared = std::make_shared<tools::Work>(options);
  tools::Caller caller(shared, hcyclient::Config(library_), tools::arraysFrom({"1"}));
  caller.add(hcyclient::Config(library_));
  caller.run();
  EXPECT_THAT(caller.measured(0).latencies, SizeIs(3));
  EXPECT_EQ(caller.measured(0).failed(), 0U);
  EXPECT_EQ(caller.measured(1).failures.at("HTTP status 404 Not Found"), 3U);
}

TEST_F(CallerTest, nothingIsCalledWhenTheWorkIsStopped) {
  const auto stopped = work("/echo", 5);
  stopped->isStopped = true;
  EXPECT_EQ(measured(stopped, {"1"}).calls(), 0U);
}

}  // namespace
}  // namespace hcy::test
