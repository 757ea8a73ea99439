// SPDX-License-Identifier: Apache-2.0
//
// Statuses of replies, and what may stand around the reply proper.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::close;
using test::Connection;
using test::httpReply;
using test::readRequest;
using test::ScriptServer;
using test::send;

class CallsStatus : public CallTest {
 protected:
  // Fails with the first reply; the second call succeeds on the same connection.
  Failure failureOfReply(const std::string& reply) {
    const ScriptServer server(
        {Connection{readRequest(), send(reply), test::replyToEach(answerReply())}});
    const Failure failure = failureOf(server.url());
    EXPECT_EQ(resultOf(server.url()), kAnswer);
    EXPECT_EQ(server.connections(), 1U);
    return failure;
  }

  double resultOfReply(const std::string& reply) {
    const ScriptServer server({Connection{readRequest(), send(reply), close()}, answering()});
    const double result = resultOf(server.url());
    EXPECT_EQ(resultOf(server.url()), kAnswer);
    return result;
  }
};

// The answer in three chunks, the last chunk still to come.
std::string chunkedAnswer() {
  return "Transfer-Encoding: chunked\r\n\r\n" + chunk(answer().substr(0, 1)) +
         chunk(answer().substr(1, 16)) + chunk(answer().substr(17));
}

TEST_F(CallsStatus, status401) {
  EXPECT_EQ(failureOfReply(httpReply(401, "Unauthorized", "", {"WWW-Authenticate: Basic"})),
            httpFailure(401, "Unauthorized\r\n"));
}

TEST_F(CallsStatus, status404) {
  EXPECT_EQ(failureOfReply(httpReply(404, "Not Found", "")), httpFailure(404, "Not Found\r\n"));
}

TEST_F(CallsStatus, status404IsOneThoughTheBodyHoldsAResult) {
  EXPECT_EQ(failureOfReply(httpReply(404, "Not Found", answer())),
            httpFailure(404, "Not Found\r\n"));
}

TEST_F(CallsStatus, status500IsOneThoughTheBodyHoldsAnError) {
  EXPECT_EQ(failureOfReply(httpReply(500, "Internal Server Error", test::errorResult("m", "i"))),
            httpFailure(500, "Internal Server Error\r\n"));
}

TEST_F(CallsStatus, status500WithAnEmptyReasonPhrase) {
  EXPECT_EQ(failureOfReply("HTTP/1.1 500 \r\nContent-Length: 0\r\n\r\n"), httpFailure(500, "\r\n"));
}

TEST_F(CallsStatus, anyStatusWithoutABlankBehindTheCode) {
  for (const std::uint32_t status : {204U, 301U, 401U, 404U, 500U, 503U}) {
    EXPECT_EQ(
        failureOfReply("HTTP/1.1 " + std::to_string(status) + "\r\nContent-Length: 0\r\n\r\n"),
        httpFailure(status, ""));
  }
}

TEST_F(CallsStatus, status503WithALineEndOfOneCharacter) {
  EXPECT_EQ(failureOfReply("HTTP/1.1 503 Busy\nContent-Length: 0\n\n"), httpFailure(503, "Busy\n"));
}

TEST_F(CallsStatus, aReasonPhraseIsHandedOnAsItCame) {
  EXPECT_EQ(failureOfReply(httpReply(418, "  na\xC3\xAFve \xFF\t", "")),
            httpFailure(418, "  na\xC3\xAFve \xFF\t\r\n"));
}

TEST_F(CallsStatus, status204HasNoBodyAndIsNotSuccess) {
  EXPECT_EQ(failureOfReply("HTTP/1.1 204 No Content\r\n\r\n"), httpFailure(204, "No Content\r\n"));
}

TEST_F(CallsStatus, status201IsNotSuccess) {
  EXPECT_EQ(failureOfReply(httpReply(201, "Created", answer())), httpFailure(201, "Created\r\n"));
}

TEST_F(CallsStatus, status301IsNotFollowed) {
  const ScriptServer elsewhere({answering()});
  EXPECT_EQ(
      failureOfReply(httpReply(301, "Moved Permanently", "", {"Location: " + elsewhere.url()})),
      httpFailure(301, "Moved Permanently\r\n"));
  EXPECT_EQ(elsewhere.connections(), 0U);
}

TEST_F(CallsStatus, status999) {
  EXPECT_EQ(failureOfReply(httpReply(999, "Beyond", "")), httpFailure(999, "Beyond\r\n"));
}

TEST_F(CallsStatus, aSuccessWithAnotherReasonPhraseIsOne) {
  EXPECT_EQ(resultOfReply(httpReply(200, "Not Really", answer())), kAnswer);
}

TEST_F(CallsStatus, aSuccessOfHttp10EndsWithItsConnection) {
  EXPECT_EQ(resultOfReply("HTTP/1.0 200 OK\r\n\r\n" + answer()), kAnswer);
}

TEST_F(CallsStatus, aSuccessWithoutLengthEndsWithItsConnection) {
  EXPECT_EQ(resultOfReply("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + answer()), kAnswer);
}

TEST_F(CallsStatus, aSuccessInChunks) {
  EXPECT_EQ(resultOfReply("HTTP/1.1 200 OK\r\n" + chunkedAnswer() + "0\r\n\r\n"), kAnswer);
}

TEST_F(CallsStatus, aSuccessInChunksWithTrailers) {
  EXPECT_EQ(resultOfReply("HTTP/1.1 200 OK\r\nTrailer: X-Sum\r\n" + chunkedAnswer() +
                          "0\r\nX-Sum: 1\r\n\r\n"),
            kAnswer);
}

TEST_F(CallsStatus, aSuccessAfterInterim100And103) {
  EXPECT_EQ(resultOfReply("HTTP/1.1 100 Continue\r\n\r\n"
                          "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" +
                          answerReply()),
            kAnswer);
}

TEST_F(CallsStatus, afterAnInterimReplyTheStatusMessageIsThatOfTheInterimReply) {
  EXPECT_EQ(failureOfReply("HTTP/1.1 103 Early Hints\r\n\r\n" + httpReply(404, "Not Found", "")),
            httpFailure(404, "Early Hints\r\n"));
}

TEST_F(CallsStatus, aReplyThatArrivesInPieces) {
  const ScriptServer server({Connection{
      readRequest(), test::drip(answerReply(), 7, std::chrono::milliseconds(1)), close()}});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsStatus, aCompressedReplyIsNotAskedForNorUnpacked) {
  EXPECT_EQ(resultOfReply(httpReply(200, "OK", answer(), {"Content-Encoding: gzip"})), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
