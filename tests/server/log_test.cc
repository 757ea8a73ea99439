// SPDX-License-Identifier: Apache-2.0
//
// The log of calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "support/pki.h"

namespace hcy::test {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

class Log : public testing::Test {
 protected:
  // The lines that three calls bring.
  std::vector<std::string> linesWith(std::vector<std::string> arguments) const {
    const std::string file = temporary_.file("log");
    arguments.insert(arguments.end(), {"--log", file, "--fault", "demo/sleep=reset"});
    {
      const LocalServer server(arguments);
      call(server, "/math/plus", 1, {scalar(2), doubles({1, 3}, {1, 2, 3})});
      call(server, "/demo/fail", 0, {chars(u"a:b"), chars(u"No\x1b luck")});
      sendRequest(server.url("/demo/sleep?x"), serializedParams(1, {scalar(0)}));
    }
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  const TestDirectory temporary_;
};

const std::string kTime = "20[0-9-]+T[0-9:.]+Z ";
const std::string kNumbers = " [0-9.]+ ms [0-9]+ B in [0-9]+ B out server";

TEST_F(Log, HasALineForEachCall) {
  EXPECT_THAT(linesWith({}), ElementsAre(MatchesRegex(kTime + "/math/plus 200" + kNumbers),
                                         MatchesRegex(kTime + "/demo/fail 200" + kNumbers),
                                         MatchesRegex(kTime + "/demo/sleep - .* \\[reset\\]")));
}

TEST_F(Log, ShowsValues) {
  EXPECT_THAT(
      linesWith({"--log-values", "--log-width", "6"}),
      ElementsAre(MatchesRegex(".* server \\(2, \\[1,2,…\\) nargout 1 -> \\(\\[3,4,…\\)"),
                  MatchesRegex(".* nargout 0 -> a:b: …"), MatchesRegex(".*\\(0\\) nargout 1")));
}

TEST_F(Log, IsOfJsonIfWanted) {
  const auto lines = linesWith({"--log-values", "--log-format", "json"});
  ASSERT_EQ(lines.size(), 3U);
  auto plus = nlohmann::json::parse(lines[0]);
  for (const char* varying : {"time", "milliseconds"}) EXPECT_EQ(plus.erase(varying), 1U);
  EXPECT_EQ(plus, nlohmann::json::parse(R"({"path":"/math/plus","status":200,"requestBytes":60,
      "replyBytes":37,"source":"server","nargout":1,"inputs":["2","[1,2,3]"],
      "outputs":["[3,4,5]"]})"));
  EXPECT_EQ(nlohmann::json::parse(lines[1]).at("error"), "a:b: No\\u001b luck");
  const auto reset = nlohmann::json::parse(lines[2]);
  EXPECT_TRUE(reset.at("status").is_null());
  EXPECT_EQ(reset.at("fault"), "reset");
}

TEST_F(Log, HasALineForEachRequestThatIsRefused) {
  const std::string file = temporary_.file("log");
  {
    const LocalServer server({"--log", file, "--max-body", "10"});
    EXPECT_EQ(sendRequest(server.url("/echo"), std::string(11, 'a')).status, 413);
    const std::string longField = "\r\na: " + std::string(20'000, 'a');
    for (const std::string& request :
         {"POST /echo HTTP/1.1" + longField, std::string("nonsense\r\n\r\n"),
          std::string("GET /x HTTP/1.1\r\n\r\n")}) {
      RawConnection connection(server.port());
      connection.send(request);
      connection.endSending();
      connection.receiveAll();
    }
  }
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  EXPECT_THAT(lines, ElementsAre(MatchesRegex(kTime + "/echo 413" + kNumbers),
                                 MatchesRegex(kTime + "/echo 431" + kNumbers),
                                 MatchesRegex(kTime + "- 400" + kNumbers),
                                 MatchesRegex(kTime + "/x 400" + kNumbers)));
}

TEST_F(Log, CountsTheBytesThatFaultsLeave) {
  const std::string file = temporary_.file("log");
  {
    const LocalServer server({"--log", file, "--log-values", "--fault", "echo=truncate:10@1",
                              "--fault", "echo=truncate:1000@2", "--fault", "echo=close@3",
                              "--fault", "echo=429", "--fault", "math/plus=delay:1ms"});
    const std::string body = serializedParams(1, {doubles({1, 4}, {1, 2, 3, 4})});
    EXPECT_EQ(sendRequest(server.url("/echo"), body).status, 0);
    for (int i = 0; i < 3; ++i) sendRequest(server.url("/echo"), body);
    call(server, "/math/plus", 1, {scalar(2), scalar(3)});
  }
  const std::string values = " \\(\\[1,2,3,4\\]\\) nargout 1";
  EXPECT_THAT(contentsOf(file),
              MatchesRegex(".* 200 .* 10 B out server \\[truncate:10\\]" + values +
                           "\n.* 200 .* 45 B out server \\[truncate:1000\\]" + values +
                           " -> \\(\\[1,2,3,4\\]\\)\n.* - .* 0 B out server \\[close\\]" + values +
                           "\n.* 429 .* 32 B out server \\[429\\]" + values +
                           "\n.* 200 .* 21 B out server \\[delay:1ms\\] .*\n"));
}

TEST_F(Log, NeedsAFileThatCanBeWritten) {
  EXPECT_THROW(LocalServer({"--log", "/no/such/folder/log"}), std::runtime_error);
  EXPECT_THROW(LocalServer({"--log-values"}), std::runtime_error);
}

}  // namespace
}  // namespace hcy::test
