// SPDX-License-Identifier: Apache-2.0
//
// The time-out covers the whole of a call. A second is the shortest there is.

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using namespace std::chrono_literals;
using test::Connection;
using test::readRequest;
using test::ScriptServer;
using test::send;
using test::stall;

class CallsTimeout : public CallTest {
 protected:
  CallsTimeout() { library->setTimeOut(config.get(), 1); }

  // Answers, but not within a second and a half.
  static Connection answeringSlowly() {
    return {readRequest(), test::drip(answerReply(), answerReply().size() / 4, 500ms)};
  }
};

TEST_F(CallsTimeout, connectingStalls) {
  const test::StalledPort port;
  EXPECT_EQ(failureOf(port.url()), kTimedOut);
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, noByteOfAReplyComes) {
  const ScriptServer server({Connection{readRequest(), stall()}, answering()});
  EXPECT_EQ(failureOf(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, theHeaderStalls) {
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/1.1 200 OK\r\nContent-"), stall()}, answering()});
  EXPECT_EQ(failureOf(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, theBodyStalls) {
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nab"), stall()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, aDripNeverPausesForAsLongAndStillTakesTooLong) {
  const ScriptServer server(
      {Connection{readRequest(), test::drip(answerReply(), 1, 50ms)}, answering()});
  EXPECT_EQ(failureOf(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, aDripThatIsDoneInTimeSucceeds) {
  const ScriptServer server({Connection{readRequest(), test::drip(answerReply(), 10, 2ms)}});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, aContextKeepsItWhenTheConfigurationGetsALongerOne) {
  context();
  library->setTimeOut(config.get(), 120);
  const ScriptServer server({Connection{readRequest(), stall()}, answering()});
  EXPECT_EQ(failureOf(server.url()), kTimedOut);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, zeroIsNoTimeout) {
  library->setTimeOut(config.get(), 0);
  const ScriptServer server({answeringSlowly()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsTimeout, oneThatLibcurlRefusesIsNone) {
  library->setTimeOut(config.get(), 0xFFFFFFFF);
  const ScriptServer server({answeringSlowly()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
