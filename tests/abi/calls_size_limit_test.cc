// SPDX-License-Identifier: Apache-2.0
//
// The response size limit: tested against the length that a reply declares, and where a reply
// declares none, the most that is read of it.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/call_test.h"

namespace hcy::abi {
namespace {

using test::close;
using test::Connection;
using test::readRequest;
using test::ScriptServer;
using test::send;
using test::waitForClose;

class CallsSizeLimit : public CallTest {
 protected:
  void limit(std::size_t bytes) {
    library->setResponseSizeLimit(config.get(), static_cast<std::uint32_t>(bytes));
  }
};

// A reply in one chunk, whose length the header does not declare.
std::string chunkedReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(body) + chunk("");
}

Connection chunking(const std::string& body) { return {test::replyToEach(chunkedReply(body))}; }

// A field that no message has, of this many bytes.
std::string unknownField(std::size_t size) { return test::bytesField(99, std::string(size, 'x')); }

// The answer behind a header that declares this length.
Connection declaring(std::uint64_t length) {
  return {
      readRequest(),
      send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n" + answer()),
      waitForClose()};
}

TEST_F(CallsSizeLimit, aDeclaredLengthOneBelowItIsAccepted) {
  limit(answer().size() + 1);
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, aDeclaredLengthAtItIsAccepted) {
  limit(answer().size());
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, aDeclaredLengthOneAboveItIsRefused) {
  limit(answer().size());
  const ScriptServer server({declaring(answer().size() + 1), answering()});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, theDefaultRefusesOneByteOver64Mebibytes) {
  const ScriptServer server({declaring(67108865), answering()});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

// The body ends early, but the answer in front was taken.
TEST_F(CallsSizeLimit, theDefaultAccepts64Mebibytes) {
  const ScriptServer server(
      {Connection{readRequest(),
                  send("HTTP/1.1 200 OK\r\nContent-Length: 67108864\r\n\r\n" + answer()), close()},
       answering()});
  EXPECT_EQ(failureOf(server.url()), genericFailure("Transferred a partial file"));
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, isTestedBeforeTheStatus) {
  limit(3);
  const ScriptServer server(
      {Connection{readRequest(), send(test::httpReply(404, "Not Found", "gone")), waitForClose()},
       Connection{test::replyToEach(test::httpReply(404, "Not Found", "go!"))}});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(failureOf(server.url()), httpFailure(404, "Not Found\r\n"));
}

TEST_F(CallsSizeLimit, isNotTestedWhenNoByteOfTheDeclaredBodyComes) {
  limit(3);
  const ScriptServer server(
      {Connection{readRequest(), send("HTTP/1.1 204 No Content\r\nContent-Length: 10\r\n\r\n"),
                  test::replyToEach("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n")}});
  EXPECT_EQ(failureOf(server.url()), httpFailure(204, "No Content\r\n"));
  EXPECT_EQ(failureOf(server.url()), httpFailure(404, "Not Found\r\n"));
}

TEST_F(CallsSizeLimit, aChunkedReplyFarAboveItIsReadUpToIt) {
  limit(answer().size());
  const ScriptServer server({chunking(answer() + unknownField(1 << 20))});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, aChunkedReplyThatItCutsIsWhatWasReadOfIt) {
  limit(answer().size() - 1);
  const ScriptServer server({chunking(answer())});
  Outputs outputs(1);
  EXPECT_EQ(context().feval(server.url(), 1, outputs.data()), 0);
  EXPECT_TRUE(hcyIsDouble(outputs[0]));
}

TEST_F(CallsSizeLimit, aChunkedReplyThatItCutsBeforeTheErrorHasNone) {
  limit(answer().size());
  const ScriptServer server({chunking(answer() + test::errorResult("m", "i"))});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, of0RefusesAnyDeclaredBody) {
  limit(0);
  const ScriptServer server({declaring(answer().size()), declaring(1)});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
}

TEST_F(CallsSizeLimit, of0AcceptsAnEmptyBody) {
  limit(0);
  const ScriptServer server({Connection{test::replyToEach(test::httpReply(200, "OK", ""))}});
  EXPECT_EQ(context().feval(server.url(), 0, nullptr), 0);
}

TEST_F(CallsSizeLimit, of0ReadsNothingOfAChunkedReply) {
  limit(0);
  const ScriptServer server({chunking(answer())});
  EXPECT_EQ(failureOf(server.url()), countFailure(0, 1));
  EXPECT_EQ(context().feval(server.url(), 0, nullptr), 0);
}

TEST_F(CallsSizeLimit, of4294967295ReadsDeclaredAndChunkedReplies) {
  limit(4294967295);
  const ScriptServer server({Connection{readRequest(), send(answerReply()), readRequest(),
                                        send(chunkedReply(answer())), close()}});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, of4294967295RefusesOneByteMore) {
  limit(4294967295);
  const ScriptServer server({declaring(4294967296), answering()});
  EXPECT_EQ(failureOf(server.url()), kOverTheLimit);
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

TEST_F(CallsSizeLimit, of2147483648ReadsReplies) {
  limit(2147483648);
  const ScriptServer server({answering()});
  EXPECT_EQ(resultOf(server.url()), kAnswer);
}

}  // namespace
}  // namespace hcy::abi
