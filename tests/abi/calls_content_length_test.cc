// SPDX-License-Identifier: Apache-2.0
//
// Odd Content-Length fields, where libcurl lets them pass. It reads the field of that name itself,
// in whatever case, and ends the transfer on a value that is no number.

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
using test::waitForClose;

const Failure kWeirdReply = genericFailure("Weird server reply");

class CallsContentLength : public CallTest {
 protected:
  // The answer behind these header lines and the end of the connection.
  static Connection answeringWith(const std::string& headerLines) {
    return {readRequest(), send("HTTP/1.1 200 OK\r\n" + headerLines + "\r\n" + answer()),
            test::halfClose(), waitForClose()};
  }

  double resultWith(const std::string& headerLines) {
    const ScriptServer server({answeringWith(headerLines), answering()});
    const double result = resultOf(server.url());
    EXPECT_EQ(resultOf(server.url()), kAnswer);
    return result;
  }

  Failure failureWith(const std::string& headerLines) {
    const ScriptServer server({answeringWith(headerLines), answering()});
    const Failure failure = failureOf(server.url());
    EXPECT_EQ(resultOf(server.url()), kAnswer);
    return failure;
  }

  // Versions of libcurl differ; either way the next call succeeds.
  void expectAnswerOrWeirdReply(const std::string& headerLines) {
    const ScriptServer server({answeringWith(headerLines), answering()});
    Outputs outputs(1);
    if (context().feval(server.url(), 1, outputs.data()) == 0) {
      EXPECT_EQ(hcyGetScalar(outputs[0]), kAnswer);
    } else {
      EXPECT_EQ(context().lastFailure(), kWeirdReply);
    }
    EXPECT_EQ(resultOf(server.url()), kAnswer);
  }

  const std::string size = std::to_string(answer().size());
};

TEST_F(CallsContentLength, inLowerCaseIsNotHeldAgainstTheLimit) {
  library->setResponseSizeLimit(config.get(), static_cast<std::uint32_t>(answer().size()));
  const std::string more = test::bytesField(99, "more");
  const std::string length = std::to_string(answer().size() + more.size());
  const ScriptServer server({Connection{
      readRequest(),
      send("HTTP/1.1 200 OK\r\ncontent-length: " + length + "\r\n\r\n" + answer() + more),
      waitForClose()}});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsContentLength, inLowerCaseStillEndsTheBody) {
  EXPECT_EQ(resultWith("content-length: " + size + "\r\n"), kAnswer);
}

TEST_F(CallsContentLength, withBlanksAround) {
  EXPECT_EQ(resultWith("Content-Length:  " + size + " \r\n"), kAnswer);
}

TEST_F(CallsContentLength, withoutABlank) {
  EXPECT_EQ(resultWith("Content-Length:" + size + "\r\n"), kAnswer);
}

TEST_F(CallsContentLength, ofAnotherFieldOverTheLimitRefusesTheBody) {
  EXPECT_EQ(failureWith("X-Upstream-Content-Length: 67108865\r\n"), kOverTheLimit);
}

TEST_F(CallsContentLength, ofAnotherFieldWithinTheLimitChangesNothing) {
  EXPECT_EQ(resultWith("X-Upstream-Content-Length: 99\r\n"), kAnswer);
}

TEST_F(CallsContentLength, ofAnotherFieldThatIsNoNumberFailsTheCall) {
  EXPECT_EQ(failureWith("X-Upstream-Content-Length: 4x\r\n"), kNoNumber);
  EXPECT_EQ(failureWith("X-Upstream-Content-Length:\r\n"), kNoNumber);
  EXPECT_EQ(failureWith("X-Upstream-Content-Length: 4 2\r\n"), kNoNumber);
  EXPECT_EQ(failureWith("X-Upstream-Content-Length: 18446744073709551616\r\n"), kNoNumber);
}

TEST_F(CallsContentLength, ofAnotherFieldThatIsNegativeRefusesTheBody) {
  EXPECT_EQ(failureWith("X-Upstream-Content-Length: -1\r\n"), kOverTheLimit);
}

TEST_F(CallsContentLength, ofAnotherFieldMinusZeroChangesNothing) {
  EXPECT_EQ(resultWith("X-Upstream-Content-Length: -0\r\n"), kAnswer);
}

TEST_F(CallsContentLength, ofAnotherFieldIsNegatedModulo2ToThe64th) {
  library->setResponseSizeLimit(config.get(), static_cast<std::uint32_t>(answer().size()));
  EXPECT_EQ(resultWith("X-Upstream-Content-Length: -18446744073709551615\r\n"), kAnswer);
}

TEST_F(CallsContentLength, ofAnotherFieldOverTheLimitIsNotHeldAgainstAnEmptyBody) {
  const ScriptServer server(
      {Connection{test::replyToEach("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n"
                                    "X-Upstream-Content-Length: 67108865\r\n\r\n")}});
  EXPECT_EQ(context().feval(server.url(), 0, nullptr), 0);
}

TEST_F(CallsContentLength, theLastFieldCounts) {
  EXPECT_EQ(resultWith("X-Upstream-Content-Length: 67108865\r\nContent-Length: " + size + "\r\n"),
            kAnswer);
  EXPECT_EQ(failureWith("Content-Length: " + size + "\r\nX-Upstream-Content-Length: 67108865\r\n"),
            kOverTheLimit);
}

TEST_F(CallsContentLength, aHintThatOnlyBeginsWithTheNameDeclaresNothing) {
  EXPECT_EQ(resultWith("X-Upstream-Content-Length: 67108865\r\nX-Content-Length-Hint: 7\r\n"),
            kAnswer);
}

TEST_F(CallsContentLength, ofAnInterimReplyCountsUntilALaterOne) {
  const std::string interim = "HTTP/1.1 103 Early Hints\r\nX-Content-Length: 67108865\r\n\r\n";
  const ScriptServer server(
      {Connection{readRequest(), send(interim + "HTTP/1.1 200 OK\r\n\r\n" + answer()),
                  test::halfClose(), waitForClose()},
       Connection{test::replyToEach(interim + answerReply())}});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsContentLength, ofATrailerThatIsNoNumberFailsTheCall) {
  const ScriptServer server({Connection{readRequest(),
                                        send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                             "1\r\nx\r\n0\r\nX-Content-Length: x\r\n\r\n"),
                                        waitForClose()},
                             answering()});
  EXPECT_EQ(failureOf(server.url()), kNoNumber);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsContentLength, isNotHeededByLibcurlWhereTheReplyIsChunked) {
  const ScriptServer server(
      {Connection{readRequest(),
                  send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\nTransfer-Encoding: "
                       "chunked\r\n\r\n" +
                       chunk(answer()) + chunk("")),
                  test::halfClose(), waitForClose()},
       answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// libcurl 7.88 takes it, 8.14 refuses it.
TEST_F(CallsContentLength, withAPlusSign) {
  expectAnswerOrWeirdReply("Content-Length: +" + size + "\r\n");
}

TEST_F(CallsContentLength, thatIsAListOfEqualNumbers) {
  EXPECT_EQ(failureWith("Content-Length: " + size + ", " + size + "\r\n"), kNoNumber);
}

TEST_F(CallsContentLength, withoutAValue) {
  EXPECT_EQ(failureWith("Content-Length:\r\n"), kWeirdReply);
}

// libcurl 8.14 leaves it to the library, 8.23 refuses it.
TEST_F(CallsContentLength, thatIsNoNumber) {
  EXPECT_THAT(failureWith("Content-Length: 4x\r\n"), testing::AnyOf(kNoNumber, kWeirdReply));
}

TEST_F(CallsContentLength, thatIsNegative) {
  EXPECT_EQ(failureWith("Content-Length: -1\r\n"), kWeirdReply);
}

TEST_F(CallsContentLength, of64BitsAndMore) {
  EXPECT_EQ(failureWith("Content-Length: 18446744073709551616\r\n"), kNoNumber);
}

// libcurl 8.14 takes the last, 8.23 refuses both.
TEST_F(CallsContentLength, ofTwoThatDiffer) {
  expectAnswerOrWeirdReply("Content-Length: 3\r\nContent-Length: " + size + "\r\n");
}

}  // namespace
}  // namespace hcy::abi
