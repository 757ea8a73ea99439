// SPDX-License-Identifier: Apache-2.0
//
// The local server as a child process of a test:
//
//   const LocalServer server;
//   call(server.url("/math/plus"));
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "loopback.h"

namespace hcy::test {

// Runs from construction to destruction, on a port that it picked. When the process of the test
// ends in whatever way, the server ends too. Processes may be started on several threads at once.
class ServerProcess {
 public:
  // Returns when the server listens; throws std::runtime_error if it ends instead.
  ServerProcess(const std::string& program, std::vector<std::string> arguments);
  // Stops the server; ends the program with a message unless that exits with status 0.
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  // "http://127.0.0.1:<port><path>", or https
  std::string url(const std::string& path = "") const { return url_ + path; }
  std::uint16_t port() const;
  pid_t pid() const noexcept { return pid_; }

  // Sends the signal, waits for the end and returns the exit status; 128 and the number of the
  // signal if one ended it. A server that is in no hurry is killed.
  int stop(int signal);
  // The same without a signal, by the end of its standard input.
  int stopByEndOfInput();

 private:
  int awaitExit();

  pid_t pid_ = -1;
  FileDescriptor input_;
  FileDescriptor output_;
  std::string url_;
};

#ifdef HCY_LOCAL_SERVER
// The server of this build.
class LocalServer : public ServerProcess {
 public:
  explicit LocalServer(std::vector<std::string> arguments = {})
      : ServerProcess(HCY_LOCAL_SERVER, std::move(arguments)) {}
};
#endif

}  // namespace hcy::test
