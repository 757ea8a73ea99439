// SPDX-License-Identifier: Apache-2.0
//
// Failures on demand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "calls.h"
#include "http_client.h"

namespace hcy::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> faults(const std::vector<std::string>& rules) {
  std::vector<std::string> arguments;
  for (const std::string& rule : rules) arguments.insert(arguments.end(), {"--fault", rule});
  return arguments;
}

HttpReply echo(const ServerProcess& server, const std::string& path = "/echo") {
  return sendRequest(server.url(path),
                     serializedParams(1, {doubles({1, 100}, std::vector<double>(100, 1))}));
}

std::vector<long> statuses(const ServerProcess& server, int count) {
  std::vector<long> all;
  for (int i = 0; i < count; ++i) all.push_back(echo(server).status);
  return all;
}

TEST(Faults, BringOtherStatuses) {
  const LocalServer server(faults({"echo=503", "math/*=401", "text/u?per=429"}));
  const HttpReply unavailable = echo(server);
  EXPECT_EQ(unavailable.status, 503);
  EXPECT_EQ(unavailable.body, "This failure was requested: 503\n");
  EXPECT_THAT(echo(server, "/math/plus").header.at("www-authenticate"), StartsWith("Basic"));
  EXPECT_EQ(echo(server, "/text/upper").status, 429);
  EXPECT_EQ(echo(server, "/stats/describe").status, 200);
  EXPECT_EQ(sendRequest(server.url("/healthz"), "", {.method = "GET"}).status, 200);
}

TEST(Faults, HappenToTheFirstCalls) {
  const LocalServer server(faults({"echo=503@2", "echo=500@3"}));
  EXPECT_THAT(statuses(server, 5), ElementsAre(503, 503, 500, 200, 200));
}

TEST(Faults, HappenToAShareThatTheSeedDecides) {
  const auto run = [](const char* seed) {
    auto arguments = faults({"echo=503@30%"});
    arguments.insert(arguments.end(), {"--seed", seed});
    const LocalServer server(arguments);
    return statuses(server, 200);
  };
  const auto first = run("7");
  EXPECT_EQ(run("7"), first);
  EXPECT_NE(run("8"), first);
  const auto failed = std::ranges::count(first, 503);
  EXPECT_GT(failed, 30);
  EXPECT_LT(failed, 90);
}

TEST(Faults, DelayCalls) {
  const LocalServer server(faults({"echo=delay:200ms", "*=delay:0.1s", "echo=503@1"}));
  auto begin = steady_clock::now();
  EXPECT_EQ(echo(server).status, 503);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(300));
  begin = steady_clock::now();
  EXPECT_EQ(echo(server).status, 200);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(300));
}

std::string errorOfRaw(const ServerProcess& server) {
  const std::string body = serializedParams(1, {scalar(1)});
  RawConnection client(server.port());
  client.send("POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
  try {
    return client.receiveAll();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(Faults, EndConnections) {
  const LocalServer server(faults({"echo=reset@1", "echo=close@2"}));
  EXPECT_EQ(errorOfRaw(server), "The connection was reset.");
  EXPECT_EQ(errorOfRaw(server), "");
  EXPECT_EQ(echo(server).status, 200);
}

TEST(Faults, CutRepliesShort) {
  const LocalServer whole;
  const std::string body = echo(whole).body;
  const LocalServer server(faults({"echo=truncate:100@2", "echo=truncate:100000"}));
  EXPECT_EQ(echo(server).status, 0);
  EXPECT_THAT(errorOfRaw(server), StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_EQ(echo(server).body, body);
}

TEST(Faults, LetRepliesDrip) {
  const LocalServer whole;
  const std::string body = echo(whole).body;
  auto arguments = faults({"echo=drip:2kB/s"});
  // The server is slow, not the client.
  arguments.insert(arguments.end(), {"--reply-timeout", "0.2"});
  const LocalServer server(arguments);
  const auto begin = steady_clock::now();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(echo(server).body, body);
  const auto time = steady_clock::now() - begin;
  EXPECT_GE(time, milliseconds(2 * 1000 * body.size() / 2000));
  EXPECT_LT(time, milliseconds(20'000));
}

TEST(Faults, BringPagesAndErrors) {
  const LocalServer server(
      faults({"math/plus=html", "echo=error:shop:till:Closed: come back@1", "*=error:a:b"}));
  const HttpReply page = echo(server, "/math/plus");
  EXPECT_EQ(page.status, 200);
  EXPECT_THAT(page.header.at("content-type"), StartsWith("text/html"));
  const VORTEN_Result result = call(server, "/echo", 1, {scalar(1)});
  EXPECT_EQ(result.error().identifier(), "shop:till");
  EXPECT_EQ(result.error().message(), "Closed: come back");
  EXPECT_EQ(call(server, "/demo/sleep", 1, {}).error().message(), "b");
}

TEST(Faults, HappenToReplayedAndUnknownFunctions) {
  const LocalServer server(faults({"no/such/function=503"}));
  EXPECT_EQ(echo(server, "/no/such/function").status, 503);
}

TEST(Faults, AreRefusedIfTheyMakeNoSense) {
  for (const char* rule :
       {"echo", "=503", "echo=", "echo=oops", "echo=99", "echo=600", "echo=delay:2",
        "echo=delay:-1s", "echo=delay:3601s", "echo=delay:nans", "echo=drip:0B/s", "echo=drip:10",
        "echo=truncate:x", "echo=error:a", "echo=error:a:", "echo=204", "echo=304", "echo=503@101%",
        "echo=503@-1"}) {
    EXPECT_THROW(LocalServer(faults({rule})), std::runtime_error) << rule;
  }
}

}  // namespace
}  // namespace hcy::test
