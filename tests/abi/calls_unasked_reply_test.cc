// SPDX-License-Identifier: Apache-2.0
//
// What arrives on a kept connection while no call is running is not the answer to the next call.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "support/between_calls.h"
#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::BetweenCalls;
using test::Connection;
using test::readRequest;
using test::replyToEach;
using test::ScriptServer;
using test::send;
using test::waitForClose;

std::string replyOf(double value) {
  return test::httpReply(200, "OK", test::resultOf({test::doubleScalar(value)}));
}

class CallsUnaskedReply : public CallTest {
 protected:
  CallsUnaskedReply() { library->setTimeOut(config.get(), 5); }

  // Answers 1, and sends the bytes when the call has ended.
  Connection sendingLater(const std::string& bytes) {
    return {readRequest(), send(replyOf(1.0)),   between.waitForCallEnd(),
            send(bytes),   between.reportSent(), waitForClose()};
  }

  // The call after the one that the bytes follow is answered on another connection.
  void expectIgnored(const std::string& bytes) {
    const ScriptServer server({sendingLater(bytes), Connection{replyToEach(replyOf(2.0))}});
    EXPECT_EQ(resultOf(server.url()), 1.0);
    ASSERT_TRUE(between.sendNow());
    // Once: waiting for the rest of what the server sent would be a failure, too.
    Outputs outputs(1);
    ASSERT_EQ(context().feval(server.url(), 1, outputs.data()), 0) << context().lastFailure().text;
    EXPECT_EQ(hcyGetScalar(outputs[0]), 2.0);
    EXPECT_EQ(resultOf(server.url()), 2.0);
    EXPECT_EQ(server.connections(), 2U);
    EXPECT_TRUE(server.waitForEnded(1));
    EXPECT_TRUE(server.problems().empty());
  }

  BetweenCalls between;
};

TEST_F(CallsUnaskedReply, whole) { expectIgnored(replyOf(666.0)); }

TEST_F(CallsUnaskedReply, twice) { expectIgnored(replyOf(666.0) + replyOf(667.0)); }

TEST_F(CallsUnaskedReply, thatTheRequestTookTooLong) {
  expectIgnored(test::httpReply(408, "Request Timeout", "", {"Connection: close"}));
}

TEST_F(CallsUnaskedReply, thatHasOnlyBegun) { expectIgnored("HTTP/1.1 200 OK\r\nContent-Le"); }

TEST_F(CallsUnaskedReply, ofGarbage) {
  expectIgnored("x");
  expectIgnored("\r\n");
  expectIgnored(std::string(3, '\0'));
}

TEST_F(CallsUnaskedReply, ofMoreThanABuffer) {
  expectIgnored(test::httpReply(200, "OK", std::string(100'000, 'x')));
}

// The connection that the last call used is not the only one that is kept.
TEST_F(CallsUnaskedReply, whileAnotherServerIsCalled) {
  const ScriptServer server({sendingLater(replyOf(666.0)), Connection{replyToEach(replyOf(2.0))}});
  const ScriptServer other({answering()});
  EXPECT_EQ(resultOf(server.url()), 1.0);
  EXPECT_EQ(resultOf(other.url()), kAnswer);
  ASSERT_TRUE(between.sendNow());
  EXPECT_EQ(resultOf(other.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), 2.0);
  EXPECT_EQ(server.connections(), 2U);
  EXPECT_EQ(other.connections(), 1U);
}

// As many as libcurl keeps connections to.
TEST_F(CallsUnaskedReply, ofEachOfFiveServers) {
  std::array<BetweenCalls, 5> gaps;
  std::deque<ScriptServer> servers;
  for (std::size_t i = 0; i < gaps.size(); ++i) {
    servers.emplace_back(
        std::vector{Connection{readRequest(), send(replyOf(1.0)), gaps[i].waitForCallEnd(),
                               send(replyOf(666.0)), gaps[i].reportSent(), waitForClose()},
                    Connection{replyToEach(replyOf(2.0))}});
  }
  for (const ScriptServer& server : servers) EXPECT_EQ(resultOf(server.url()), 1.0);
  for (BetweenCalls& gap : gaps) ASSERT_TRUE(gap.sendNow());
  for (const ScriptServer& server : servers) {
    EXPECT_EQ(resultOf(server.url()), 2.0);
    EXPECT_EQ(server.connections(), 2U);
  }
}

TEST_F(CallsUnaskedReply, doesNotComeAndTheConnectionsAreUsedAgain) {
  const ScriptServer server({answering()});
  const ScriptServer other({answering()});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(resultOf(server.url()), kAnswer);
    EXPECT_EQ(resultOf(other.url()), kAnswer);
  }
  EXPECT_EQ(server.connections(), 1U);
  EXPECT_EQ(other.connections(), 1U);
}

}  // namespace
}  // namespace hcy::abi
