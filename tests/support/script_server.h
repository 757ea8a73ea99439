// SPDX-License-Identifier: Apache-2.0
// An HTTP server for fault tests that does on each connection exactly what a script tells it:
//
//   ScriptServer server({
//       Connection{readRequest(), send(httpReply(200, "OK", "")), close()},
//       Connection{readRequest(), send("HTTP/1.1 200 OK\r\nContent-Len"), reset()},
//   });
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "loopback.h"
#include "script_channel.h"
#include "script_journal.h"
#include "script_request.h"
#include "script_steps.h"

namespace hcy::test {

// What becomes of connections beyond the scripted ones.
enum class AfterScripts {
  repeatLast,  // the last script runs on each of them
  refuse,      // nobody listens any more once the last scripted one is accepted
};

// Serves connections side by side from its construction to its destruction, which cuts short
// whatever the scripts are doing.
class ScriptServer {
 public:
  static constexpr std::chrono::milliseconds kPatience{30'000};

  explicit ScriptServer(std::vector<Connection> scripts,
                        AfterScripts afterScripts = AfterScripts::repeatLast);
  ~ScriptServer();
  ScriptServer(const ScriptServer&) = delete;
  ScriptServer& operator=(const ScriptServer&) = delete;

  std::uint16_t port() const noexcept { return port_.number(); }
  std::string url(const std::string& path = "/") const { return port_.url(path); }

  // In the order in which they were read; whatever the client has a reply to is among them.
  std::vector<RawRequest> requests() const { return journal_.requests(); }
  // How many connections were accepted.
  std::size_t connections() const { return journal_.connections(); }
  // The steps that could not be carried out, each with connection and step counted from 0. Those
  // of connections that may still be open show after waitForEnded().
  std::vector<std::string> problems() const { return journal_.problems(); }

  // Wait until at least this many were accepted, read, or ended by script or problem; false if
  // that does not happen in time.
  bool waitForConnections(std::size_t count, std::chrono::milliseconds timeout = kPatience) const {
    return journal_.waitForConnections(count, timeout);
  }
  bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout = kPatience) const {
    return journal_.waitForRequests(count, timeout);
  }
  bool waitForEnded(std::size_t count, std::chrono::milliseconds timeout = kPatience) const {
    return journal_.waitForEnded(count, timeout);
  }

 private:
  void acceptAll();
  void acceptNext();
  void serve(FileDescriptor socket, std::size_t connection);

  const std::vector<Connection> scripts_;
  const AfterScripts afterScripts_;
  Journal journal_;
  StopSignal stop_;
  UnlistenedPort port_;  // keeps the port ours when the listener is gone
  FileDescriptor listener_;
  std::vector<std::jthread> connectionThreads_;  // only the acceptor adds to them
  std::jthread acceptor_;
};

}  // namespace hcy::test
