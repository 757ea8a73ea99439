// SPDX-License-Identifier: Apache-2.0
//
// The header fields of replies that are passed on, recorded and replayed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "recording.h"
#include "support/script_server.h"

namespace hcy::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The whole reply to a call, as it comes.
std::string rawReply(const ServerProcess& server, const std::string& fields = "") {
  RawConnection client(server.port());
  client.send("POST /f HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\n" + fields +
              (fields.find("onnection: ") == std::string::npos ? "Connection: close\r\n" : "") +
              "\r\nhi");
  return client.receiveAll();
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t i = text.find(part); i != std::string::npos; i = text.find(part, i + 1)) ++found;
  return found;
}

// Of one upstream reply: what a client gets from it, and from its recording.
struct Twice {
  std::string live, replayed;
};

class PassingOn : public Recording {
 protected:
  Twice twice(const std::string& reply) const {
    Twice both;
    {
      const ScriptServer upstream({Connection{readRequest(), send(reply)}});
      const LocalServer recorder(recording(upstream.url()));
      both.live = rawReply(recorder);
    }
    const LocalServer replayer(replaying());
    both.replayed = rawReply(replayer);
    return both;
  }

  std::string recordedHeader() const {
    const std::string file = contentsOf(onlyFile().string());
    return file.substr(0, file.find('\n'));
  }
};

TEST_F(PassingOn, KeepsFieldsForTheClient) {
  const std::string body("\x1f\x8b\x00not really", 13);
  const std::vector<std::string> fields = {"Content-Type: application/x-google-protobuf",
                                           "Content-Encoding: gzip",
                                           "Location: /jobs/7",
                                           "Retry-After: 7",
                                           "Vary: A",
                                           "Vary: B",
                                           "Server: lab/2",
                                           "X-Empty:"};
  const auto [live, replayed] = twice(httpReply(202, "Later", body, fields));
  EXPECT_EQ(live, replayed);
  EXPECT_THAT(live, AllOf(StartsWith("HTTP/1.1 202 Later\r\n"), testing::EndsWith(body)));
  for (const std::string& field : fields) {
    EXPECT_EQ(count(live, "\r\n" + field), 1U) << field << "\n" << live;
  }
  EXPECT_EQ(count(live, "Server:"), 1U);
}

TEST_F(PassingOn, LeavesOutWhatIsForOneConnection) {
  const auto [live, replayed] = twice(
      httpReply(200, "OK", "body",
                {"connection: x-hop , keep-alive", "X-Hop: 1", "Keep-Alive: timeout=5",
                 "Proxy-Authenticate: Basic", "Upgrade: h2c", "Trailer: X-Late", "X-End: 2"}));
  EXPECT_EQ(live, replayed);
  EXPECT_THAT(live, HasSubstr("X-End: 2\r\n"));
  for (const char* name : {"X-Hop", "Keep-Alive", "Proxy-Auth", "Upgrade", "Trailer"}) {
    EXPECT_THAT(live, Not(HasSubstr(name)));
  }
  EXPECT_EQ(count(live, "Connection: "), 1U);
}

TEST_F(PassingOn, LeavesOutFieldsOfRequestsThatAreForOneConnection) {
  ScriptServer upstream({Connection{readRequest(), send(httpReply(200, "OK", ""))}});
  const LocalServer recorder(recording(upstream.url()));
  rawReply(recorder, "X-Hop: 1\r\nX-End: 2\r\nConnection: close, X-Hop\r\n");
  EXPECT_THAT(upstream.requests().at(0).head,
              AllOf(HasSubstr("X-End: 2\r\n"), Not(HasSubstr("X-Hop"))));
}

TEST_F(PassingOn, KeepsSecretsOutOfRecordings) {
  const auto [live, replayed] =
      twice(httpReply(401, "Who?", "no",
                      {"Set-Cookie: id=hush", "WWW-Authenticate: Bearer realm=\"hush\"",
                       "X-Api-Token: hush", "Authentication-Info: hush", "X-Calm: loud"}));
  EXPECT_EQ(count(live, "hush"), 4U);
  EXPECT_EQ(count(recordedHeader(), "hush"), 0U);
  EXPECT_THAT(replayed, AllOf(HasSubstr("WWW-Authenticate: Bearer\r\n"),
                              HasSubstr("X-Calm: loud\r\n"), Not(HasSubstr("hush"))));
}

TEST_F(PassingOn, KnowsTrailersAndInterimRepliesFromTheHeader) {
  const auto [live, replayed] = twice(
      "HTTP/1.1 103 Early\r\nX-Early: 1\r\n\r\nHTTP/1.1 200 OK\r\nX-Long: a\r\n  b\r\n"
      "Transfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\nX-Late: 1\r\n\r\n");
  EXPECT_EQ(live, replayed);
  EXPECT_THAT(
      live, AllOf(HasSubstr("X-Long: a b\r\n"), HasSubstr("Content-Length: 4\r\n"),
                  Not(HasSubstr("X-Early")), Not(HasSubstr("X-Late")), Not(HasSubstr("chunked"))));
}

TEST_F(PassingOn, SaysNothingOfTheLengthOfNoBody) {
  const auto [live, replayed] = twice("HTTP/1.1 204 Done\r\nX-End: 2\r\n\r\n");
  EXPECT_EQ(live, replayed);
  EXPECT_THAT(live, AllOf(StartsWith("HTTP/1.1 204 Done\r\n"), Not(HasSubstr("Content-Length"))));
}

// The line of an earlier version, the request "hi", and the reply.
std::string earlierRecording(const std::string& more) {
  return R"({"format":1,"path":"/f","sha256":)"
         R"("8f434346648f6b96df89dda901c5176b10a6d83961dd3c1ac88b59b2dc327aa4",)"
         R"("requestBytes":2,"status":503,"reason":"Busy","contentType":"text/plain",)"
         R"("replyBytes":4,"milliseconds":0.5)" +
         more + "}\nhibody";
}

TEST_F(PassingOn, ReplaysRecordingsOfEarlierVersions) {
  fs::create_directory(folder());
  std::ofstream(folder() / "000001-f.hcycall") << earlierRecording(R"(,"retryAfter":"7")");
  const LocalServer replayer(replaying());
  EXPECT_THAT(rawReply(replayer),
              AllOf(StartsWith("HTTP/1.1 503 Busy\r\n"), HasSubstr("Content-Type: text/plain\r\n"),
                    HasSubstr("Retry-After: 7\r\n"), testing::EndsWith("body")));
}

TEST_F(PassingOn, RefusesRecordedFieldsThatWouldBreakTheReply) {
  fs::create_directory(folder());
  for (const char* field :
       {R"(["Transfer-Encoding","chunked"])", R"(["content-length","9"])", R"(["X","a\r\nY: b"])",
        R"(["X Y","a"])", R"(["","a"])", R"(["X"])", R"(["X",1])", "1"}) {
    std::ofstream(folder() / "000001-f.hcycall")
        << earlierRecording(std::string(R"(,"header":[)") + field + "]");
    EXPECT_THROW(LocalServer{replaying()}, std::runtime_error) << field;
  }
  std::ofstream(folder() / "000001-f.hcycall") << earlierRecording(R"(,"header":[["X","a"]])");
  const LocalServer replayer(replaying());
  EXPECT_THAT(rawReply(replayer), HasSubstr("X: a\r\n"));
}

}  // namespace
}  // namespace hcy::test
