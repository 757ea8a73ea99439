// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "calls.h"
#include "http_client.h"

namespace hcy::test {
namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string request(const std::string& startLine, const std::string& headerLines,
                    const std::string& body = "") {
  return startLine + "\r\nHost: localhost\r\n" + headerLines + "\r\n" + body;
}

std::string postOf(const std::string& body, const std::string& headerLines = "") {
  return request("POST /echo HTTP/1.1",
                 headerLines + "Content-Length: " + std::to_string(body.size()) + "\r\n", body);
}

// Reads one reply with its body, and returns the status line.
std::string receiveReply(RawConnection& connection) {
  const std::string statusLine = connection.receiveLine();
  std::size_t length = 0;
  for (std::string line; !(line = connection.receiveLine()).empty();) {
    if (line.starts_with("Content-Length: ")) length = std::stoul(line.substr(16));
  }
  EXPECT_EQ(connection.receive(length).size(), length);
  return statusLine;
}

TEST(Http, DescribesTheReply) {
  const LocalServer server;
  const HttpReply reply = sendRequest(server.url("/echo"), serializedParams(1, {scalar(1)}));
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.header.at("content-type"), "application/x-google-protobuf");
  EXPECT_EQ(reply.header.at("content-length"), std::to_string(reply.body.size()));
  EXPECT_GT(reply.body.size(), 0U);
}

TEST(Http, ListsTheFunctions) {
  const LocalServer server;
  const HttpReply page = sendRequest(server.url("/"), "", {.method = "GET"});
  EXPECT_EQ(page.status, 200);
  EXPECT_THAT(page.header.at("content-type"), StartsWith("text/plain"));
  for (const char* path :
       {"/echo", "/math/plus", "/linalg/solve", "/linalg/svd", "/demo/fail", "/stats/linear_fit",
        "/stats/describe", "/text/upper", "/text/split", "/sparse/multiply", "/demo/sleep"}) {
    EXPECT_THAT(page.body, HasSubstr(path));
  }
  const HttpReply head = sendRequest(server.url("/"), "", {.method = "HEAD"});
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body, "");
  EXPECT_EQ(head.header.at("content-length"), std::to_string(page.body.size()));
}

TEST(Http, ListsTheFunctionsAsJson) {
  const LocalServer server;
  for (const char* accept :
       {"Accept: application/json", "accept: text/html;q=0.5, Application/JSON"}) {
    const HttpReply page =
        sendRequest(server.url("/"), "", {.method = "GET", .headerLines = {accept}});
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.header.at("content-type"), "application/json");
    const auto list = nlohmann::json::parse(page.body).at("functions");
    ASSERT_EQ(list.size(), 11U);
    EXPECT_EQ(list[5],
              (nlohmann::json{{"name", "math/plus"},
                              {"arguments", "A, B (real or complex, equal shape or one a scalar)"},
                              {"summary", "A + B"}}));
  }
}

TEST(Http, TellsThatItServes) {
  const LocalServer server;
  const HttpReply health = sendRequest(server.url("/healthz"), "", {.method = "GET"});
  EXPECT_EQ(health.status, 200);
  EXPECT_EQ(health.body, "ok\n");
  EXPECT_EQ(sendRequest(server.url("/healthz"), "").status, 405);
}

TEST(Http, KnowsNoOtherPath) {
  const LocalServer server;
  for (const char* path : {"/nothing", "/echo/", "/math", "//echo", "/Echo", "/echo%00"}) {
    const HttpReply reply = sendRequest(server.url(path), serializedParams(0, {}));
    EXPECT_EQ(reply.status, 404) << path;
    EXPECT_THAT(reply.header.at("content-type"), StartsWith("text/plain"));
    EXPECT_THAT(reply.body, EndsWith("\n"));
  }
}

TEST(Http, KnowsNoOtherMethod) {
  const LocalServer server;
  for (const char* method : {"GET", "PUT", "DELETE", "HEAD", "OPTIONS", "BREW"}) {
    const HttpReply reply = sendRequest(server.url("/echo"), "", {.method = method});
    EXPECT_EQ(reply.status, 405) << method << reply.failure;
    EXPECT_EQ(reply.header.at("allow"), "POST");
  }
  const HttpReply reply = sendRequest(server.url("/"), "");
  EXPECT_EQ(reply.status, 405);
  EXPECT_EQ(reply.header.at("allow"), "GET, HEAD");
}

TEST(Http, RefusesABodyThatIsNoParams) {
  const LocalServer server;
  for (const std::string body : {"\x0a", "hello", "\x12\x7f", "\x08\x80"}) {
    EXPECT_EQ(sendRequest(server.url("/echo"), body).status, 400) << body;
  }
}

TEST(Http, RefusesABodyThatIsTooLong) {
  const LocalServer server({"--max-body", "100"});
  EXPECT_EQ(sendRequest(server.url("/nothing"), std::string(100, 'x')).status, 404);
  EXPECT_EQ(sendRequest(server.url("/nothing"), std::string(101, 'x')).status, 413);
  // More than the sockets hold, so the reply comes before all is sent.
  const HttpReply reply = sendRequest(server.url("/echo"), std::string(20'000'000, 'x'));
  EXPECT_EQ(reply.status, 413) << reply.failure;
  EXPECT_EQ(sendRequest(server.url("/echo"), std::string(101, 'x'),
                        {.headerLines = {"Transfer-Encoding: chunked"}})
                .status,
            413);
}

TEST(Http, RefusesADeclaredLengthAtOnce) {
  const LocalServer server({"--max-body", "100"});
  RawConnection connection(server.port());
  connection.send(request("POST /echo HTTP/1.1", "Content-Length: 101\r\n"));
  EXPECT_THAT(connection.receiveAll(), StartsWith("HTTP/1.1 413 "));
}

TEST(Http, RefusesAnyLengthBeyondTwoGibibytes) {
  const LocalServer server;
  for (const char* length : {"2147483648", "18446744073709551615"}) {
    RawConnection connection(server.port());
    connection.send(
        request("POST /echo HTTP/1.1", "Content-Length: " + std::string(length) + "\r\n"));
    EXPECT_THAT(connection.receiveAll(), StartsWith("HTTP/1.1 413 "));
  }
  // The longest one is waited for.
  RawConnection connection(server.port());
  connection.send(
      request("POST /echo HTTP/1.1", "Expect: 100-continue\r\nContent-Length: 2147483647\r\n"));
  EXPECT_EQ(connection.receiveLine(), "HTTP/1.1 100 Continue");
}

TEST(Http, TakesChunks) {
  const LocalServer server;
  const HttpReply reply = sendRequest(
      server.url("/echo"), serializedParams(1, {doubles({1, 5000}, std::vector<double>(5000, 1))}),
      {.headerLines = {"Transfer-Encoding: chunked"}});
  VORTEN_Result result;
  ASSERT_TRUE(result.ParseFromString(reply.body));
  EXPECT_EQ(realPart(result.lhs(0)), std::vector<double>(5000, 1));
}

TEST(Http, IgnoresTheQueryAndTheHostInTheTarget) {
  const LocalServer server;
  for (const char* target : {"/echo?a=/b", "http://localhost/echo", "http://localhost/echo?/"}) {
    RawConnection connection(server.port());
    connection.send(request("POST " + std::string(target) + " HTTP/1.1", "Content-Length: 0\r\n"));
    EXPECT_EQ(receiveReply(connection), "HTTP/1.1 200 OK") << target;
  }
}

TEST(Http, KeepsTheConnection) {
  const LocalServer server;
  RawConnection connection(server.port());
  for (const std::string& sent :
       {postOf(""), postOf("no params"), request("GET /echo HTTP/1.1", ""),
        request("POST /nothing HTTP/1.1", "Content-Length: 1\r\n", "x"), postOf("")}) {
    connection.send(sent);
    EXPECT_THAT(receiveReply(connection), StartsWith("HTTP/1.1 "));
  }
  connection.send(postOf("") + postOf("no params") + postOf("", "Connection: close\r\n"));
  EXPECT_EQ(receiveReply(connection), "HTTP/1.1 200 OK");
  EXPECT_EQ(receiveReply(connection), "HTTP/1.1 400 Bad Request");
  EXPECT_EQ(receiveReply(connection), "HTTP/1.1 200 OK");
  EXPECT_EQ(connection.receiveAll(), "");
}

TEST(Http, EndsTheConnectionIfAsked) {
  const LocalServer server;
  RawConnection connection(server.port());
  connection.send(postOf("", "Connection: close\r\n"));
  EXPECT_THAT(connection.receiveAll(), HasSubstr("\r\nConnection: close\r\n"));
}

TEST(Http, SendsNoBodyToHead) {
  const LocalServer server;
  RawConnection connection(server.port());
  connection.send(request("HEAD / HTTP/1.1", "Connection: close\r\n"));
  EXPECT_THAT(connection.receiveAll(), EndsWith("\r\n\r\n"));
}

TEST(Http, ServesHttp10) {
  const LocalServer server;
  RawConnection once(server.port());
  once.send("POST /echo HTTP/1.0\r\nContent-Length: 0\r\n\r\n");
  EXPECT_THAT(once.receiveAll(), StartsWith("HTTP/1.0 200 OK\r\n"));
  RawConnection twice(server.port());
  for (int i = 0; i < 2; ++i) {
    twice.send("POST /echo HTTP/1.0\r\nConnection: keep-alive\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(receiveReply(twice), "HTTP/1.0 200 OK");
  }
}

TEST(Http, AsksForABodyThatWaits) {
  const LocalServer server;
  RawConnection connection(server.port());
  connection.send(request("POST /echo HTTP/1.1", "Expect: 100-continue\r\nContent-Length: 2\r\n"));
  EXPECT_EQ(connection.receiveLine(), "HTTP/1.1 100 Continue");
  EXPECT_EQ(connection.receiveLine(), "");
  connection.send(std::string("\x08\0", 2));
  EXPECT_EQ(receiveReply(connection), "HTTP/1.1 200 OK");
}

TEST(Http, AnswersMalformedRequests) {
  const LocalServer server;
  const std::string longHeader =
      "POST /echo HTTP/1.1\r\nHost: a\r\nX: " + std::string(20'000, 'x') + "\r\n\r\n";
  const std::string null("GET /\0 HTTP/1.1\r\nHost: a\r\n\r\n", 29);
  for (const auto& [bytes, status] : std::vector<std::pair<std::string, std::string>>{
           {"\r\n\r\n", "400"},
           {"\x16\x03\x01\x02\x00\x01", "400"},
           {"nonsense\r\n\r\n", "400"},
           {null, "400"},
           {"GET / HTTP/2.0\r\nHost: a\r\n\r\n", "400"},
           {"GET / HTTP/1.1\r\n\r\n", "400"},
           {"GET / HTTP/1.1\r\nHost: a\r\nHost: b\r\n\r\n", "400"},
           {"GET / HTTP/1.1\r\nHost a\r\n\r\n", "400"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: x\r\n\r\n", "400"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: -1\r\n\r\n", "400"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
            "400"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\nx\r\n", "400"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: "
            "chunked\r\n\r\nfffffffffffffffff\r\n",
            "400"},
           // Some versions of Boost refuse it themselves.
           {"POST /echo HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: gzip\r\n\r\n", "(501|400)"},
           {"POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 10\r\n\r\nshort", "400"},
           {"POST /echo HTTP/1.1\r\nHost", "400"},
           {longHeader, "431"}}) {
    RawConnection connection(server.port());
    connection.send(bytes);
    connection.endSending();
    EXPECT_THAT(connection.receiveAll(), ContainsRegex("^HTTP/1.1 " + status + " ")) << bytes;
  }
  EXPECT_EQ(sendRequest(server.url("/echo"), "").status, 200);
}

TEST(Http, SurvivesClientsThatLeave) {
  const LocalServer server;
  for (const std::string& bytes : {std::string(), postOf(std::string(1000, 'x')).substr(0, 200),
                                   postOf(serializedParams(1, {scalar(1)}))}) {
    RawConnection connection(server.port());
    connection.send(bytes);
  }
  EXPECT_EQ(sendRequest(server.url("/echo"), "").status, 200);
}

}  // namespace
}  // namespace hcy::test
