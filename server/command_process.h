// SPDX-License-Identifier: Apache-2.0
//
// A command that answers lines by lines.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>

#include "byte_buffer.h"

namespace hcy::server {

// The command gave no answer; what() says how it ended, or what it did instead.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs from construction to destruction, in a process group of its own, its standard error that of
// the server. One thread uses it at a time, but end() may be called by another.
class CommandProcess {
 public:
  // By the shell. Throws std::system_error if no process can be started.
  explicit CommandProcess(const std::string& command);
  ~CommandProcess();
  CommandProcess(const CommandProcess&) = delete;
  CommandProcess& operator=(const CommandProcess&) = delete;

  // Whether it runs, and has written nothing that it was not asked for.
  bool isReady();

  // Writes the line and returns the one that comes back, without its end. Throws CommandFailure,
  // after which the process is of no use, and std::bad_alloc.
  ByteBuffer ask(std::string_view line, std::chrono::duration<double> patience);

  // Sends the signal to the command and all that it has started.
  void signal(int number);
  bool hasEnded();

 private:
  std::string howItEnded();

  std::mutex mutex_;  // of the process, which is unknown when it has been reaped
  pid_t pid_ = -1;
  int input_ = -1;
  int output_ = -1;
};

}  // namespace hcy::server
