// SPDX-License-Identifier: Apache-2.0
//
// Requests and what comes back for them.

#include "http/http_request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "http/http_client.h"
#include "http/http_response.h"
#include "support/process_curl.h"
#include "support/script_server.h"

namespace hcy {
namespace {

using test::Connection;
using test::httpReply;
using test::readRequest;
using test::ScriptServer;
using test::send;
using ::testing::ElementsAre;
using ::testing::StrEq;

static_assert(!std::is_copy_constructible_v<HttpRequest>);
static_assert(!std::is_copy_assignable_v<HttpRequest>);

std::string bodyOf(const Response& response) {
  return {response.bodyData(), static_cast<std::size_t>(response.bodySize())};
}

class HttpRequestTest : public ::testing::Test {
 protected:
  std::unique_ptr<Request> requestWith(const std::string& body) {
    std::unique_ptr<Request> request = client.createRequest(server.url("/f"));
    request->setBody(body.data(), body.size());
    return request;
  }

  const test::ProcessCurl curl;
  ScriptServer server{{Connection{test::replyToEach(httpReply(200, "OK", "fine"))}}};
  QXHttpClient client;
};

TEST_F(HttpRequestTest, holdsThreeHeaderLinesInOrder) {
  EXPECT_THAT(HttpRequest::headerLines,
              ElementsAre(StrEq("Content-Type: application/x-google-protobuf"),
                          StrEq("User-Agent: Halcyon C client"), StrEq("Expect: ")));
}

TEST_F(HttpRequestTest, isAPostOfItsBody) {
  const std::string body("a\0b\xFF", 4);
  EXPECT_EQ(bodyOf(*requestWith(body)->perform()), "fine");
  EXPECT_EQ(server.requests().at(0).head.substr(0, 17), "POST /f HTTP/1.1\r");
  EXPECT_EQ(server.requests().at(0).body, body);
}

TEST_F(HttpRequestTest, withAnEmptyBodyIsAPostToo) {
  requestWith("")->perform();
  EXPECT_EQ(server.requests().at(0).head.substr(0, 5), "POST ");
  EXPECT_EQ(server.requests().at(0).header("Content-Length"), "0");
}

TEST_F(HttpRequestTest, sendsTheBytesThatTheBodyHasWhenPerformed) {
  std::string body = "early";
  const std::unique_ptr<Request> request = client.createRequest(server.url());
  request->setBody(body.data(), body.size());
  body = "later";
  request->perform();
  EXPECT_EQ(server.requests().at(0).body, "later");
}

TEST_F(HttpRequestTest, sendsTheBodyThatWasSetLast) {
  const std::unique_ptr<Request> request = requestWith("first");
  const std::string second = "the second";
  request->setBody(second.data(), second.size());
  request->perform();
  EXPECT_EQ(server.requests().at(0).body, second);
}

TEST_F(HttpRequestTest, performedTwiceIsSentTwiceWithAResponseEach) {
  const std::string body = "body";
  const std::unique_ptr<Request> request = requestWith(body);
  const std::unique_ptr<Response> first = request->perform();
  const std::unique_ptr<Response> second = request->perform();
  EXPECT_EQ(bodyOf(*first), "fine");
  EXPECT_EQ(bodyOf(*second), "fine");
  ASSERT_EQ(server.requests().size(), 2U);
  EXPECT_EQ(server.requests()[0].head, server.requests()[1].head);
  EXPECT_EQ(server.requests()[1].body, body);
  EXPECT_EQ(server.connections(), 1U);
}

TEST_F(HttpRequestTest, keepsItsUrlWhenAnotherIsMadeAndPerformed) {
  const std::string body = "body";
  const std::unique_ptr<Request> one = client.createRequest(server.url("/one"));
  const std::unique_ptr<Request> two = client.createRequest(server.url("/two"));
  two->setBody(body.data(), body.size());
  two->perform();
  one->perform();
  EXPECT_EQ(server.requests().at(0).head.substr(0, 10), "POST /two ");
  EXPECT_EQ(server.requests().at(1).head.substr(0, 10), "POST /one ");
}

TEST_F(HttpRequestTest, copiesItsUrl) {
  std::string url = server.url("/copied");
  const std::unique_ptr<Request> request = client.createRequest(url);
  url.assign(url.size(), 'x');
  request->setBody("", 0);
  request->perform();
  EXPECT_EQ(server.requests().at(0).head.substr(0, 13), "POST /copied ");
}

TEST_F(HttpRequestTest, outlivesItsClient) {
  std::unique_ptr<Request> request;
  {
    QXHttpClient shortLived;
    request = shortLived.createRequest(server.url());
  }
  request->setBody("x", 1);
  EXPECT_EQ(bodyOf(*request->perform()), "fine");
}

TEST_F(HttpRequestTest, aResponseOutlivesRequestAndClient) {
  std::unique_ptr<Response> response;
  {
    QXHttpClient shortLived;
    const std::unique_ptr<Request> request = shortLived.createRequest(server.url());
    request->setBody("x", 1);
    response = request->perform();
  }
  EXPECT_EQ(response->statusCode(), 200U);
  EXPECT_EQ(response->statusMessage(), "OK\r\n");
  EXPECT_EQ(bodyOf(*response), "fine");
}

TEST_F(HttpRequestTest, status500IsAnAnswerWhoseBodyIsKept) {
  const ScriptServer failing(
      {Connection{readRequest(), send(httpReply(500, "Internal Server Error", "why"))}});
  const std::unique_ptr<Request> request = client.createRequest(failing.url());
  request->setBody("x", 1);
  const std::unique_ptr<Response> response = request->perform();
  EXPECT_EQ(response->statusCode(), 500U);
  EXPECT_EQ(response->statusMessage(), "Internal Server Error\r\n");
  EXPECT_EQ(bodyOf(*response), "why");
}

TEST_F(HttpRequestTest, anAnswerWithoutBodyHasSize0AndAPointer) {
  const ScriptServer silent({Connection{readRequest(), send(httpReply(200, "OK", ""))}});
  const std::unique_ptr<Request> request = client.createRequest(silent.url());
  request->setBody("x", 1);
  const std::unique_ptr<Response> response = request->perform();
  EXPECT_EQ(response->bodySize(), 0U);
  EXPECT_NE(response->bodyData(), nullptr);
}

TEST_F(HttpRequestTest, anAnswerTakesEveryHeaderLineOfTheExchange) {
  const ScriptServer talkative({Connection{
      readRequest(), send("HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"
                          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nX-Odd:  \t1 \r\n\r\n"
                          "1\r\nx\r\n0\r\nX-Content-Length: 2\r\n\r\n")}});
  const std::unique_ptr<Request> request = client.createRequest(talkative.url());
  request->setBody("x", 1);
  const std::unique_ptr<Response> response = request->perform();
  EXPECT_EQ(response->statusMessage(), "Early Hints\r\n");
  EXPECT_EQ(dynamic_cast<HttpResponse&>(*response).declaredLength(), 2U);
}

}  // namespace
}  // namespace hcy
