// SPDX-License-Identifier: Apache-2.0
//
// Which failures are tried again, and how often.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>

#include "replies.h"
#include "results/exit_status.h"

namespace hcy::test {
namespace {

// Each connection answers one request with a status; 0 stands for no answer at all.
class Server {
 public:
  explicit Server(const std::vector<int>& statuses) : server_(scripts(statuses)) {}

  Outcome call(const std::string& options) const {
    return run("echo '[]' | " HCY_PROGRAM " call " + server_.url("/f") + " " + options);
  }
  std::size_t requests() const { return server_.requests().size(); }

 private:
  static std::vector<Connection> scripts(const std::vector<int>& statuses) {
    std::vector<Connection> all;
    for (const int status : statuses) {
      const std::string body = status == 200 ? resultOf({doubleScalar(7)}) : "";
      std::string reply;
      if (status != 0) {
        reply = httpReply(status, "Status", body, {"Connection: close"});
      }
      all.push_back(Connection{readRequest(), send(reply), close()});
    }
    return all;
  }

  ScriptServer server_;
};

TEST(Retry, whatMayPassIsTriedAgain) {
  const Server server({503, 0, 200});
  const Outcome outcome = server.call("--retry 2");
  EXPECT_EQ(outcome.output, "ans: double 1-by-1 = 7\n");
  EXPECT_EQ(server.requests(), 3U);
}

TEST(Retry, noMoreOftenThanItIsSaid) {
  const Server server({503, 503, 200});
  EXPECT_EQ(server.call("--retry 1").status, tools::kHttpError);
  EXPECT_EQ(server.requests(), 2U);
}

TEST(Retry, onlyIfItIsSaid) {
  const Server server({503, 200});
  EXPECT_EQ(server.call("").status, tools::kHttpError);
  EXPECT_EQ(server.requests(), 1U);
}

Outcome replied(const std::string& body, const std::string& options, std::size_t& requests) {
  const ScriptServer server({{replyToEach(httpReply(200, "OK", body))}});
  const Outcome outcome =
      run("echo '[]' | " HCY_PROGRAM " call " + server.url("/f") + " " + options);
  requests = server.requests().size();
  return outcome;
}

TEST(Retry, aReplyThatCannotBeReadIsNotRequestedAgain) {
  const std::string result = resultOf({doubleScalar(7)});
  for (const auto& [body, options] :
       {std::pair{result, "--max-reply 3"}, {result, "-n 2"}, {std::string("<html></html>"), ""}}) {
    std::size_t requests = 0;
    for (const std::string way : {" --retry 2", " --retry 2 --each"}) {
      const std::string words = options + way;
      EXPECT_EQ(replied(body, words, requests).status, tools::kTransportError) << words;
      EXPECT_EQ(requests, 1U) << words;
    }
  }
}

TEST(Retry, eachAttemptHasItsOwnTimeout) {
  const ScriptServer server(
      {{readRequest(), stall()}, {replyToEach(httpReply(200, "OK", resultOf({doubleScalar(7)})))}});
  const Outcome outcome =
      run("echo '[]' | " HCY_PROGRAM " call " + server.url("/f") + " --retry 1 --timeout 0.9");
  EXPECT_EQ(outcome.output, "ans: double 1-by-1 = 7\n");
  EXPECT_EQ(server.requests().size(), 2U);
}

TEST(Retry, aServerMayAskToWait) {
  const std::string postponed = httpReply(503, "Busy", "", {"Retry-After: 1", "Connection: close"});
  const ScriptServer server({{readRequest(), send(postponed), close()},
                             {replyToEach(httpReply(200, "OK", resultOf({doubleScalar(7)})))}});
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome =
      run("echo '[]' | " HCY_PROGRAM " call " + server.url("/f") + " --retry 1");
  EXPECT_EQ(outcome.output, "ans: double 1-by-1 = 7\n");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(Retry, ofEachOfManyCalls) {
  const Server server({503, 0, 200});
  EXPECT_EQ(server.call("--retry 2 --each").output, "7\n");
  EXPECT_EQ(server.requests(), 3U);
}

TEST(Retry, whatStaysIsNotTriedAgain) {
  const Server server({403, 200});  // after a 404, hcy would request the index
  EXPECT_EQ(server.call("--retry 3").status, tools::kHttpError);
  EXPECT_EQ(server.requests(), 1U);
}

}  // namespace
}  // namespace hcy::test
