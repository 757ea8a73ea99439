// SPDX-License-Identifier: Apache-2.0
// The vocabulary in which a test tells a ScriptServer what to do on a connection.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace hcy::test {

struct Stage;  // what the steps of one connection share while they run

struct Step {
  std::string name;
  std::function<void(Stage&)> run;
};

// The steps taken on one connection, in order; after the last one it is closed.
struct Connection {
  Connection(std::initializer_list<Step> script) : steps(script) {}
  std::vector<Step> steps;
};

// Read and record a request: whole; or its head at first, recorded with an empty body, and then,
// if the script says so, the body that belongs to it.
Step readRequest();
Step readRequestHead();
Step readRequestBody();

// Send these bytes: as they are; in pieces of `pieceSize` bytes, one each `interval`; or
// `pattern` over and over until `total` bytes are sent, the last time cut short if need be.
Step send(std::string bytes);
Step drip(std::string bytes, std::size_t pieceSize, std::chrono::milliseconds interval);
Step sendRepeated(const std::string& pattern, std::size_t total);

// Answer every request with this until the peer closes.
Step replyToEach(std::string bytes);

// Say nothing until the peer closes, reading nothing either; or reading and discarding.
Step stall();
Step waitForClose();

// End the connection. A half-close ends only our sending; close() is orderly unless the peer is
// still sending: then halfClose(), waitForClose() is. A reset comes after all that was sent.
Step halfClose();
Step close();
Step reset();

// A complete reply; Content-Length is the size of `body`.
std::string httpReply(int status, std::string_view reason, std::string_view body,
                      const std::vector<std::string>& extraHeaders = {});

}  // namespace hcy::test
