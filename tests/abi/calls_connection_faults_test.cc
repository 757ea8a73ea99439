// SPDX-License-Identifier: Apache-2.0
//
// Faults of the connection: each ends the call with libcurl's text, and the next call on the same
// context succeeds.

#include <gtest/gtest.h>

#include <string>

#include "support/call_test.h"
#include "support/libcurl_text.h"

namespace hcy::abi {
namespace {

using test::close;
using test::Connection;
using test::halfClose;
using test::libcurlText;
using test::readRequest;
using test::reset;
using test::ScriptServer;
using test::send;
using test::UnlistenedPort;
using test::waitForClose;

using CallsConnectionFaults = CallTest;

const std::string kHeader = "HTTP/1.1 200 OK\r\n";
const std::string kReset = "Failure when receiving data from the peer";
const std::string kNothing = "Server returned nothing (no headers, no data)";
const std::string kPartial = "Transferred a partial file";

TEST_F(CallsConnectionFaults, nobodyListens) {
  const UnlistenedPort port;
  EXPECT_EQ(failureOf(port.url()), genericFailure(libcurlText(CURLE_COULDNT_CONNECT)));
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, nobodyListensAnyMore) {
  const ScriptServer server({Connection{readRequest(), send(answerReply()), close()}},
                            test::AfterScripts::refuse);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  ASSERT_TRUE(server.waitForEnded(1));
  EXPECT_EQ(failureOf(server.url()), genericFailure(libcurlText(CURLE_COULDNT_CONNECT)));
}

// A label of a host name holds at most 63 characters, so nothing is asked of a name server.
TEST_F(CallsConnectionFaults, theHostNameCannotResolve) {
  EXPECT_EQ(failureOf("http://" + std::string(64, 'a') + ".invalid/"),
            genericFailure(libcurlText(CURLE_COULDNT_RESOLVE_HOST)));
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theUrlIsEmpty) {
  EXPECT_EQ(failureOf(""), genericFailure("URL using bad/illegal format or missing URL"));
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theUrlHoldsABlank) {
  EXPECT_EQ(failureOf("http://127.0.0.1:1/a b"),
            genericFailure("URL using bad/illegal format or missing URL"));
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theUrlNamesNoKnownScheme) {
  EXPECT_EQ(failureOf("halcyon://127.0.0.1/f"), genericFailure("Unsupported protocol"));
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, resetBeforeTheHeader) {
  const ScriptServer server({Connection{readRequest(), reset()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, resetDuringTheHeader) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Content-Len"), reset()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, resetAfterTheHeader) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Content-Length: 5\r\n\r\n"), reset()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, resetInTheMiddleOfTheBody) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Content-Length: 5\r\n\r\nab"), reset()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, closedWithoutReadingTheRequest) {
  const ScriptServer server({Connection{halfClose(), waitForClose()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kNothing));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, closedWithoutAReply) {
  const ScriptServer server({Connection{readRequest(), close()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kNothing));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, closedInTheMiddleOfTheStatusLine) {
  const ScriptServer server({Connection{readRequest(), send("HTTP/1.1 2"), close()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kNothing));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// libcurl takes what came for a reply without body.
TEST_F(CallsConnectionFaults, closedInTheMiddleOfTheHeader) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Content-Len"), close()}, answering()});
  EXPECT_EQ(failureOf(server.url()), countFailure(0, 1));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theBodyIsShorterThanDeclared) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Content-Length: 1000\r\n\r\n" + answer()),
                  close()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kPartial));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, closedInTheMiddleOfAChunk) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Transfer-Encoding: chunked\r\n\r\n64\r\nabc"),
                  close()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kPartial));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, closedBeforeTheLastChunk) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n"),
                  close()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kPartial));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theSizeOfAChunkIsNoNumber) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "Transfer-Encoding: chunked\r\n\r\nxyz\r\nabc\r\n"),
                  waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, aChunkIsLongerThanItsSize) {
  const ScriptServer server(
      {Connection{readRequest(),
                  send(kHeader + "Transfer-Encoding: chunked\r\n\r\n3\r\nabcXY\r\n0\r\n\r\n"),
                  waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theReplyIsNotHttp) {
  const ScriptServer server(
      {Connection{readRequest(), send("SSH-2.0-server\r\n"), waitForClose()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure("Unsupported protocol"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theReplyIsOfAnUnknownHttpVersion) {
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/7.7 200 OK\r\n\r\n"), waitForClose()}, answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure("Unsupported protocol"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// libcurl takes at most 300 KiB of header lines, and of one line 100 KiB.
TEST_F(CallsConnectionFaults, theHeaderBlockIsOfOneMebibyte) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader),
                  test::sendRepeated("X-Filler: " + std::string(1012, 'x') + "\r\n", 1 << 20),
                  send("\r\n"), waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, aHeaderLineIsOfOneMebibyte) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + "X-Filler: "), test::sendRepeated("x", 1 << 20),
                  send("\r\n\r\n"), waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure(libcurlText(test::kHeaderTooLong)));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, theStatusLineHoldsANul) {
  const ScriptServer server(
      {Connection{readRequest(), send(std::string("HTTP/1.1 404 No\0t\r\n\r\n", 21)),
                  waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure("Weird server reply"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, aHeaderLineHoldsANul) {
  const ScriptServer server(
      {Connection{readRequest(), send(kHeader + std::string("X: \0\r\n\r\n", 9)), waitForClose()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure("Weird server reply"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsConnectionFaults, bytesBehindTheReplyBelongToNoCall) {
  const ScriptServer server(
      {Connection{readRequest(), send(answerReply() + "HTTP/1.1 500 No\r\n\r\n"), waitForClose()},
       answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(server.connections(), 2U);
}

TEST_F(CallsConnectionFaults, theKeptConnectionIsClosedBetweenTwoCallsWhichBothSucceed) {
  const ScriptServer server({Connection{readRequest(), send(answerReply()), close()}, answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  ASSERT_TRUE(server.waitForEnded(1));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(server.connections(), 2U);
}

// The library repeats nothing; this is libcurl's own way with a connection that it had kept.
TEST_F(CallsConnectionFaults, aKeptConnectionThatClosesUnansweredIsReplacedByANewOne) {
  const ScriptServer server(
      {Connection{readRequest(), send(answerReply()), readRequest(), close()}, answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(server.requests().size(), 3U);
  EXPECT_EQ(server.connections(), 2U);
}

TEST_F(CallsConnectionFaults, tenFailuresInARowLeaveTheContextUsable) {
  std::vector<Connection> scripts(10, Connection{readRequest(), reset()});
  scripts.push_back(answering());
  const ScriptServer server(scripts);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(failureOf(server.url()), genericFailure(kReset));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
