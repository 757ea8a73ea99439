// SPDX-License-Identifier: Apache-2.0
//
// Clients that do not read, do not send, send without end, or ask for too much: what they take of
// the server is bounded, and others are answered meanwhile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "calls.h"
#include "http_client.h"
#include "observation.h"

namespace hcy::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ContainsRegex;

using RawConnections = std::vector<std::unique_ptr<RawConnection>>;

std::string headerOf(const std::string& path, const std::string& headerLines) {
  return "POST " + path + " HTTP/1.1\r\nHost: a\r\n" + headerLines + "\r\n";
}

std::string callOf(const std::string& path, int nargout, const std::vector<VORTEN_Array>& inputs) {
  const std::string body = serializedParams(nargout, inputs);
  return headerOf(path, "Content-Length: " + std::to_string(body.size()) + "\r\n") + body;
}

// More than 30 MB.
std::string callForMuch() {
  return callOf("/demo/fail", 0, {chars(u"a"), chars(u"b"), scalar(1e6)});
}

const std::string kHalfRequest = headerOf("/echo", "Content-Length: 100\r\n") + "half";

RawConnections connectionsThatSend(const ServerProcess& server, std::size_t count,
                                   const std::string& bytes) {
  RawConnections connections;
  for (std::size_t i = 0; i < count; ++i) {
    connections.push_back(std::make_unique<RawConnection>(server.port()));
    connections.back()->send(bytes);
  }
  return connections;
}

void expectOthersAnswered(const ServerProcess& server) {
  EXPECT_EQ(realPart(outputs(server, "/math/plus", 1, {scalar(1), scalar(2)})[0]),
            (std::vector<double>{3}));
}

// The beginning of the reply, whose rest is not read.
std::string statusLine(RawConnection& connection) { return connection.receiveLine(); }

// Whether the server ends the connection, in good time and without a reply.
bool isEnded(RawConnection& connection) {
  if (!waitUntil([&] { return connection.hasInput(); })) return false;
  try {
    return connection.receiveAll().empty();
  } catch (const std::runtime_error&) {
    return true;  // It was reset.
  }
}

TEST(HostileClients, ReadNoReply) {
  const LocalServer server;
  RawConnections connections = connectionsThatSend(server, 40, callForMuch());
  std::ptrdiff_t answered = 0, refused = 0;
  for (const auto& connection : connections) {
    const std::string status = statusLine(*connection);
    answered += status == "HTTP/1.1 200 OK";
    refused += status == "HTTP/1.1 503 Service Unavailable";
  }
  EXPECT_EQ(answered + refused, 40);
  EXPECT_GE(answered, 2);
  EXPECT_GE(refused, 30);
#ifndef HCY_SANITIZED
  EXPECT_LT(peakMemory(server.pid()), std::size_t{300} << 20);
#endif
  expectOthersAnswered(server);
  // When they leave, there is room again.
  connections.clear();
  EXPECT_TRUE(waitUntil([&] {
    RawConnection connection(server.port());
    connection.send(callForMuch());
    return statusLine(connection) == "HTTP/1.1 200 OK";
  }));
}

TEST(HostileClients, SendBodiesThatAreNeverWhole) {
  // All messages together may take 72 MiB.
  const LocalServer server({"--max-body", "1000000"});
  const std::string body =
      headerOf("/echo", "Content-Length: 1000000\r\n") + std::string(999'999, 'x');
  const RawConnections connections = connectionsThatSend(server, 100, body);
  std::ptrdiff_t refused = 0;
  EXPECT_TRUE(waitUntil([&] {
    refused = std::ranges::count_if(connections, [](const auto& one) { return one->hasInput(); });
    return refused >= 5;
  }));
  for (const auto& connection : connections) {
    if (connection->hasInput()) {
      EXPECT_EQ(statusLine(*connection), "HTTP/1.1 503 Service Unavailable");
    }
  }
  expectOthersAnswered(server);
}

TEST(HostileClients, SendExtensionsAndTrailersWithoutEnd) {
  const LocalServer server;
  const std::string chunked = headerOf("/echo", "Transfer-Encoding: chunked\r\n");
  const auto repeated = [](const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
  };
  // Some versions of Boost call the line itself malformed.
  const std::string kTooLong = "(431|400)";
  const std::string extended = "2;" + std::string(100, 'x') + "\r\n\x08\x01\r\n";
  for (const auto& [bytes, status] : std::vector<std::pair<std::string, std::string>>{
           {chunked + extended + "0;x=y\r\nTrailer: x\r\n\r\n", "200"},
           {chunked + repeated("00000002\r\n\x08\x01\r\n", 10'000) + "0\r\n\r\n", "200"},
           {chunked + repeated(extended, 1000), "431"},
           {chunked + "2;" + std::string(20'000, 'x') + "\r\n", kTooLong},
           {chunked + "2;" + std::string(1'000'000, 'x'), kTooLong},
           {chunked + repeated("0", 100'000), kTooLong},
           {chunked + "0\r\n" + repeated("Trailer: x\r\n", 2000) + "\r\n", "431"},
           {chunked + "0\r\n" + repeated("Trailer: x\r\n", 20'000), "431"},
           {headerOf("/" + std::string(12'000, 'x'), "X: " + std::string(12'000, 'x') + "\r\n"),
            "431"}}) {
    RawConnection connection(server.port());
    connection.send(bytes);
    connection.endSending();
    EXPECT_THAT(connection.receiveAll(), ContainsRegex("^HTTP/1.1 " + status + " "))
        << bytes.substr(0, 200);
  }
}

TEST(HostileClients, NeverSendAWholeRequest) {
  const LocalServer server({"--request-timeout", "0.3"});
  for (const std::string& bytes : {std::string(), std::string("POST /echo HT"), kHalfRequest}) {
    RawConnection connection(server.port());
    connection.send(bytes);
    ASSERT_TRUE(isEnded(connection)) << bytes;
  }
  // Neither does a byte now and then put off the end.
  RawConnection slow(server.port());
  const auto start = steady_clock::now();
  slow.send(headerOf("/echo", "Content-Length: 1000000\r\n"));
  EXPECT_THROW(
      while (steady_clock::now() < start + std::chrono::minutes(1)) {
        slow.send("x");
        std::this_thread::sleep_for(milliseconds(20));
      },
      std::runtime_error);
}

TEST(HostileClients, AreNotThoseThatPauseBetweenRequests) {
  const LocalServer server({"--request-timeout", "0.3", "--reply-timeout", "0.3"});
  RawConnection connection(server.port());
  const std::string call = callOf("/demo/sleep", 0, {scalar(0.5)});
  for (int i = 0; i < 2; ++i) {
    connection.send(call);
    EXPECT_EQ(connection.receiveLine(), "HTTP/1.1 200 OK");
    while (!connection.receiveLine().empty()) continue;
    std::this_thread::sleep_for(milliseconds(500));
  }
}

TEST(HostileClients, AreNotThoseThatSendForLong) {
  const LocalServer server({"--request-timeout", "0.4"});
  const std::string call =
      callOf("/echo", 0, {doubles({1, 500'000}, std::vector<double>(500'000, 1))});
  RawConnection connection(server.port());
  constexpr std::size_t kPart = 800'000;
  for (std::size_t i = 0; i < call.size(); i += kPart) {
    connection.send(call.substr(i, kPart));
    std::this_thread::sleep_for(milliseconds(150));
  }
  EXPECT_EQ(statusLine(connection), "HTTP/1.1 200 OK");
}

TEST(HostileClients, StopReading) {
  const LocalServer server({"--reply-timeout", "0.3"});
  const std::ptrdiff_t before = openFiles(server.pid());
  RawConnection connection(server.port());
  connection.send(callForMuch());
  EXPECT_EQ(statusLine(connection), "HTTP/1.1 200 OK");
  EXPECT_TRUE(waitUntil([&] { return openFiles(server.pid()) == before; }));
}

TEST(HostileClients, AreNotThoseThatReadSlowly) {
  const LocalServer server({"--reply-timeout", "0.5"});
  RawConnection connection(server.port());
  connection.send(callForMuch());
  std::string length;
  for (std::string line; !(line = connection.receiveLine()).empty();) {
    if (line.starts_with("Content-Length: ")) length = line.substr(16);
  }
  std::size_t left = std::stoul(length);
  while (left > 0) {
    const std::size_t count = connection.receive(std::min<std::size_t>(left, 2 << 20)).size();
    ASSERT_GT(count, 0U);
    left -= count;
    std::this_thread::sleep_for(milliseconds(50));
  }
}

TEST(HostileClients, CalculateForLong) {
  const LocalServer server;
  constexpr std::uint64_t kOrder = 1'500;
  std::vector<double> values(kOrder * kOrder);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * i % 1009);
  const RawConnections connections =
      connectionsThatSend(server, std::max(2U, std::thread::hardware_concurrency()) + 4,
                          callOf("/linalg/svd", 3, {doubles({kOrder, kOrder}, values)}));
  for (int i = 0; i < 10; ++i) expectOthersAnswered(server);
  const std::vector<double> long_(200'000, 1);
  EXPECT_EQ(realPart(outputs(server, "/echo", 1, {doubles({1, 200'000}, long_)})[0]), long_);
  EXPECT_EQ(realPart(outputs(server, "/linalg/solve", 1, {scalar(2), scalar(4)})[0]),
            (std::vector<double>{2}));
  for (const auto& connection : connections) EXPECT_FALSE(connection->hasInput());
}

TEST(HostileClients, SleepInGreatNumbers) {
  // Of its 32 connections, 16 may sleep.
  const auto server = serverOfFewFiles(64);
  const RawConnections connections =
      connectionsThatSend(*server, 24, callOf("/demo/sleep", 0, {scalar(3600)}));
  for (int i = 0; i < 40; ++i) expectOthersAnswered(*server);
  EXPECT_EQ(std::ranges::count_if(connections, [](const auto& one) { return one->hasInput(); }), 8);
  EXPECT_EQ(statusLine(*connections.back()), "HTTP/1.1 503 Service Unavailable");
}

TEST(HostileClients, TakeAllDescriptors) {
  const auto server = serverOfFewFiles(256);
  RawConnection asleep(server->port());
  asleep.send(callOf("/demo/sleep", 0, {scalar(1)}));
  const RawConnections connections = connectionsThatSend(*server, 300, kHalfRequest);
  expectOthersAnswered(*server);
  // The oldest one has been closed; the newest one, and one that waits for its reply, have not.
  EXPECT_TRUE(isEnded(*connections.front()));
  EXPECT_FALSE(connections.back()->hasInput());
  EXPECT_EQ(statusLine(asleep), "HTTP/1.1 200 OK");
  EXPECT_LT(openFiles(server->pid()), 256);
}

// A server that has descriptors for so many connections only, whatever it counts on.
std::unique_ptr<LocalServer> serverOfFewConnections(rlim_t most) {
  const rlim_t own = lowDescriptors(LocalServer().pid());
  return serverOfFewFiles(own + most);
}

TEST(HostileClients, LeaveTooFewDescriptors) {
  const auto server = serverOfFewConnections(3);
  const RawConnections connections = connectionsThatSend(*server, 40, kHalfRequest);
  expectOthersAnswered(*server);
}

TEST(HostileClients, LeaveNoDescriptor) {
  const auto server = serverOfFewConnections(2);
  const RawConnections asleep =
      connectionsThatSend(*server, 2, callOf("/demo/sleep", 0, {scalar(1)}));
  // Before their requests have been read, they would be closed to make room.
  std::this_thread::sleep_for(milliseconds(200));
  const RawConnections waiting =
      connectionsThatSend(*server, 1, callOf("/demo/sleep", 0, {scalar(0)}));
  const auto before = timeTaken(server->pid());
  std::this_thread::sleep_for(milliseconds(300));
  EXPECT_FALSE(waiting[0]->hasInput());
  EXPECT_LT(timeTaken(server->pid()) - before, milliseconds(100));
  EXPECT_EQ(statusLine(*waiting[0]), "HTTP/1.1 200 OK");
}

}  // namespace
}  // namespace hcy::test
