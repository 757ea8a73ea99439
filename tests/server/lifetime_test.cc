// SPDX-License-Identifier: Apache-2.0
//
// Connections side by side, and how the server starts and ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "observation.h"

namespace hcy::test {
namespace {

using std::chrono::steady_clock;
using testing::HasSubstr;
using testing::MatchesRegex;

std::string sleepRequest(double seconds) {
  const std::string body = serializedParams(0, {scalar(seconds)});
  return "POST /demo/sleep HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

// More of them than the server has threads.
std::vector<std::unique_ptr<RawConnection>> sleepers(const LocalServer& server) {
  std::vector<std::unique_ptr<RawConnection>> connections;
  for (unsigned i = 0; i < std::thread::hardware_concurrency() + 8; ++i) {
    connections.push_back(std::make_unique<RawConnection>(server.port()));
    connections.back()->send(sleepRequest(3600));
  }
  return connections;
}

TEST(Connections, DoNotWaitForOneThatSleeps) {
  const LocalServer server;
  const auto asleep = sleepers(server);
  const auto start = steady_clock::now();
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(realPart(outputs(server, "/math/plus", 1, {scalar(1), scalar(2)})[0]),
              (std::vector<double>{3}));
  }
  EXPECT_LT(steady_clock::now() - start, std::chrono::minutes(1));
}

TEST(Connections, AreServedSideBySide) {
  const LocalServer server;
  std::vector<std::jthread> clients;
  for (int client = 0; client < 8; ++client) {
    clients.emplace_back([&server, client] {
      for (int i = 0; i < 25; ++i) {
        const double value = 1000 * client + i;
        EXPECT_EQ(realPart(outputs(server, "/math/plus", 1, {scalar(value), scalar(0.5)})[0]),
                  (std::vector<double>{value + 0.5}));
      }
    });
  }
}

TEST(Lifetime, EndsAtSignals) {
  for (const int signal : {SIGTERM, SIGINT}) {
    LocalServer server;
    const RawConnection idle(server.port());
    RawConnection half(server.port());
    half.send("POST /echo HTTP/1.1\r\nHost: a\r\nContent-Length: 100\r\n\r\nhalf");
    const auto asleep = sleepers(server);
    EXPECT_EQ(sendRequest(server.url("/echo"), "").status, 200);
    const auto start = steady_clock::now();
    EXPECT_EQ(server.stop(signal), 0);
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(10));
  }
}

TEST(Lifetime, EndsWhileItCalculates) {
  LocalServer server;
  constexpr std::uint64_t kOrder = 3'000;
  std::vector<double> values(kOrder * kOrder);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * i % 1009);
  const std::string body = serializedParams(3, {doubles({kOrder, kOrder}, values)});
  RawConnection connection(server.port());
  connection.send("POST /linalg/svd HTTP/1.1\r\nHost: a\r\nContent-Length: " +
                  std::to_string(body.size()) + "\r\n\r\n");
  connection.send(body);
  // Receiving the matrix takes a fraction of a second; its factors, many.
  const auto received = timeTaken(server.pid());
  ASSERT_TRUE(
      waitUntil([&] { return timeTaken(server.pid()) > received + std::chrono::seconds(1); }));
  const auto start = steady_clock::now();
  EXPECT_EQ(server.stop(SIGTERM), 0);
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(Lifetime, EndsWithItsInput) {
  LocalServer server;
  EXPECT_EQ(server.stopByEndOfInput(), 0);
}

std::string failureOf(std::vector<std::string> arguments) try {
  const LocalServer server(std::move(arguments));
  return "listens";
} catch (const std::runtime_error& failure) {
  return failure.what();
}

TEST(Lifetime, BeginsWithAFreePort) {
  const LocalServer one, other;
  EXPECT_THAT(one.url(), MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+"));
  EXPECT_NE(one.port(), other.port());
  EXPECT_NE(one.port(), 0);
  EXPECT_EQ(LocalServer({"--host", "localhost"}).url().find("http://localhost:"), 0U);
}

TEST(Lifetime, DoesNotBeginWithWrongOptions) {
  const LocalServer server;
  const auto taken = failureOf({"--port", std::to_string(server.port())});
  EXPECT_THAT(taken, HasSubstr("(status 1)"));
  EXPECT_THAT(failureOf({"--host", "192.0.2.1"}), HasSubstr("(status 1)"));
  EXPECT_THAT(failureOf({"--cert", HCY_NORRIS_DATA, "--key", HCY_NORRIS_DATA}),
              HasSubstr("(status 1)"));
}

// The command's exit status, and what it writes to the standard error.
std::pair<int, std::string> standardErrorOf(const std::string& arguments) {
  const std::string command = HCY_LOCAL_SERVER " " + arguments + " 2>&1 >/dev/null </dev/null";
  FILE* const output = ::popen(command.c_str(), "r");
  std::string text;
  for (int byte; (byte = std::getc(output)) != EOF;) text.push_back(static_cast<char>(byte));
  const int status = ::pclose(output);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
}

TEST(Lifetime, DoesNotBeginWithWrongUsage) {
  const std::string data = HCY_NORRIS_DATA;
  for (const std::string& arguments :
       {std::string("--nonsense"), std::string("argument"), std::string("--port x"),
        std::string("--port 65536"), std::string("--max-body 2147483648"),
        std::string("--max-body -1"), "--cert " + data, "--key " + data, "--client-ca " + data,
        std::string("--cert /no/such/file --key /no/such/file"),
        std::string("--upstream ftp://127.0.0.1/"), std::string("--upstream http:// "),
        std::string("--upstream http://127.0.0.1:1 --upstream-user-file /no/such/file"),
        "--upstream http://127.0.0.1:1 --record " + data, std::string("--replay /no/such/folder"),
        "--replay " + data}) {
    const auto [status, text] = standardErrorOf(arguments);
    EXPECT_EQ(status, 64) << arguments;
    EXPECT_THAT(text, MatchesRegex("hcy-local-server: .+\nRun with --help .+\n")) << arguments;
  }
}

TEST(Lifetime, TellsItsVersionAndOptions) {
  EXPECT_THAT(failureOf({"--version"}),
              MatchesRegex(".*\\(status 0\\).*hcy-local-server [0-9.]+\n"));
  EXPECT_THAT(failureOf({"--help"}), HasSubstr("(status 0)"));
}

}  // namespace
}  // namespace hcy::test
