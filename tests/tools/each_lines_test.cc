// SPDX-License-Identifier: Apache-2.0

#include "calls/each_lines.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

namespace hcy::test {
namespace {

using namespace std::chrono_literals;

TEST(AnswerSink, largeAnswersHoldBackAllCallsButTheNext) {
  testing::internal::CaptureStdout();
  tools::AnswerSink answers(0, {100, 10});
  answers.put(1, {"12345678\n", {}, 0});
  EXPECT_TRUE(answers.awaitRoom(3));  // 9 bytes wait
  answers.put(2, {"x\n", {}, 0});
  auto room = std::async(std::launch::async, [&] { return answers.awaitRoom(3); });
  EXPECT_TRUE(answers.awaitRoom(0));
  EXPECT_EQ(room.wait_for(50ms), std::future_status::timeout);
  answers.put(0, {"0\n", {}, 0});
  EXPECT_TRUE(room.get());
  EXPECT_EQ(answers.finish().calls, 3U);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "0\n12345678\nx\n");
}

TEST(AnswerSink, manyAnswersHoldBackCallsToo) {
  testing::internal::CaptureStdout();
  tools::AnswerSink answers(0, {2, 1000});
  EXPECT_TRUE(answers.awaitRoom(1));
  auto room = std::async(std::launch::async, [&] { return answers.awaitRoom(2); });
  EXPECT_EQ(room.wait_for(50ms), std::future_status::timeout);
  answers.put(0, {"0\n", {}, 0});
  EXPECT_TRUE(room.get());
  testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace hcy::test
