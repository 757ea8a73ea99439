// SPDX-License-Identifier: Apache-2.0
//
// Which failures are tried again, and how often.

#include <gtest/gtest.h>

#include <string>

#include "calls/exit_status.h"
#include "replies.h"

namespace hcy::test {
namespace {

// Each connection answers one request with a status; 0 stands for no answer at all.
class Server {
 public:
  explicit Server(const std::vector<int>& statuses) : server_(scripts(statuses)) {}

  Outcome call(const std::string& options) const {
    return run(HCY_PROGRAM " call " + server_.url("/f") + " " + options);
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

TEST(Retry, whatStaysIsNotTriedAgain) {
  const Server server({403, 200});  // after a 404, hcy would request the index
  EXPECT_EQ(server.call("--retry 3").status, tools::kHttpError);
  EXPECT_EQ(server.requests(), 1U);
}

}  // namespace
}  // namespace hcy::test
