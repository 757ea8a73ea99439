// SPDX-License-Identifier: Apache-2.0
//
// Header lines and trailers without end. libcurl bounds each line and the header lines of a reply
// to 300 KiB, newer versions with the trailers; the header lines and trailers of a call are 1 MiB
// at most.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::Connection;
using test::readRequest;
using test::ScriptServer;
using test::send;
using test::sendRepeated;
using test::waitForClose;

constexpr std::size_t kKibibyte = 1024;
constexpr std::uint64_t kEndless = std::uint64_t{1} << 40;

// Of 1 KiB, line end included.
const std::string kLine = "X-Filler: " + std::string(1012, 'x') + "\r\n";

const std::string kChunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n";

// All of a chunked body but for the blank line behind the trailers.
std::string wholeBody() { return chunk(answer()) + "0\r\n"; }

const Failure kTooManyForLibcurl = genericFailure("Failure when receiving data from the peer");

class CallsEndlessHeader : public CallTest {
 protected:
  // A failure that the time-out tells from one that stops the server soon.
  CallsEndlessHeader() { library->setTimeOut(config.get(), 5); }

  // Whether the server could send at most this much before the client closed: what the client
  // reads, and what the buffers of two sockets hold.
  static void expectSentAtMost(const ScriptServer& server, std::size_t most) {
    ASSERT_TRUE(server.waitForEnded(1));
    ASSERT_EQ(server.problems().size(), 1U);
    const std::string problem = server.problems().at(0);
    const std::size_t after = problem.find(" after ");
    ASSERT_NE(after, std::string::npos) << problem;
    EXPECT_LE(std::stoull(problem.substr(after + 7)), most) << problem;
  }
};

TEST_F(CallsEndlessHeader, ofTrailersFailsTheCall) {
  const ScriptServer server({Connection{readRequest(), send(kChunked + "\r\n" + wholeBody()),
                                        sendRepeated(kLine, kEndless)},
                             answering()});
  EXPECT_THAT(failureOf(server.url()), testing::AnyOf(kOverTheLimit, kTooManyForLibcurl));
  expectSentAtMost(server, std::size_t{32} << 20);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// Newer versions of libcurl bound the number of lines themselves.
TEST_F(CallsEndlessHeader, ofShortTrailersFailsTheCall) {
  const ScriptServer server({Connection{readRequest(), send(kChunked + "\r\n" + wholeBody()),
                                        sendRepeated("a:\r\n", kEndless)},
                             answering()});
  const Failure failure = failureOf(server.url());
  if (failure != genericFailure("A value or data field grew larger than allowed")) {
    EXPECT_EQ(failure, kOverTheLimit);
  }
  expectSentAtMost(server, std::size_t{32} << 20);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// Which of the two bounds is met first is libcurl's choice.
TEST_F(CallsEndlessHeader, ofAReplyFailsTheCall) {
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/1.1 200 OK\r\n"), sendRepeated(kLine, kEndless)},
       answering()});
  EXPECT_NE(failureOf(server.url()), kTimedOut);
  expectSentAtMost(server, std::size_t{32} << 20);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsEndlessHeader, ofInterimRepliesFailsTheCall) {
  const ScriptServer server(
      {Connection{readRequest(), sendRepeated("HTTP/1.1 103 Early Hints\r\n\r\n", kEndless)},
       answering()});
  EXPECT_NE(failureOf(server.url()), kTimedOut);
  expectSentAtMost(server, std::size_t{32} << 20);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsEndlessHeader, isNotOneOf250Kibibytes) {
  const ScriptServer server(
      {Connection{readRequest(), send(kChunked), sendRepeated(kLine, 150 * kKibibyte),
                  send("\r\n" + wholeBody()), sendRepeated(kLine, 100 * kKibibyte), send("\r\n"),
                  test::replyToEach(answerReply())}});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(server.connections(), 1U);
}

// The lines of one call do not count against the next one.
TEST_F(CallsEndlessHeader, isNotTheSumOfSeveralCalls) {
  std::string reply = kChunked + "\r\n" + wholeBody();
  for (std::size_t i = 0; i < 250; ++i) reply += kLine;
  const ScriptServer server({Connection{test::replyToEach(reply + "\r\n")}});
  for (int i = 0; i < 5; ++i) EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(server.connections(), 1U);
}

// The status line and the fields count as well, but they are less than a line here.
TEST_F(CallsEndlessHeader, isOneOverAMebibyte) {
  const auto sending = [](std::size_t trailers) {
    return Connection{readRequest(), send(kChunked + "\r\n" + wholeBody()),
                      sendRepeated(kLine, trailers), send("\r\n"), waitForClose()};
  };
  const ScriptServer within({sending(1023 * kKibibyte)});
  Outputs outputs(1);
  const bool isLibcurlsBoundLower = context().feval(within.url(), 1, outputs.data()) != 0;
  if (isLibcurlsBoundLower) {
    EXPECT_EQ(context().lastFailure(), kTooManyForLibcurl);
  } else {
    EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
  }
  const ScriptServer over({sending(1025 * kKibibyte)});
  EXPECT_EQ(failureOf(over.url()), isLibcurlsBoundLower ? kTooManyForLibcurl : kOverTheLimit);
}

}  // namespace
}  // namespace hcy::abi
