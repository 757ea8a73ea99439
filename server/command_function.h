// SPDX-License-Identifier: Apache-2.0
//
// A function that a command answers.

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "command_process.h"
#include "http_replies.h"

namespace hcy::server {

// All functions may be called by several threads at once.
class CommandFunction {
 public:
  // Starts the processes. Throws std::system_error.
  CommandFunction(std::string name, std::string command, unsigned workers, double patience);
  ~CommandFunction();

  const std::string& name() const { return name_; }
  const std::string& command() const { return command_; }

  // Blocks while all processes are busy, and until one has answered. Throws nothing but
  // std::bad_alloc.
  Reply call(std::string_view request);

  // Ends all processes; calls that are being answered fail. For the end of the server.
  void end();

 private:
  // A place for a process; null until the next call if it has failed.
  struct Worker {
    std::shared_ptr<CommandProcess> process;
    bool isBusy = false;
  };

  ByteBuffer answerTo(std::string_view request);
  ByteBuffer ask(std::string_view line);
  Worker& take();
  void giveBack(Worker& worker);
  std::shared_ptr<CommandProcess> readyProcess(Worker& worker);

  const std::string name_;
  const std::string command_;
  const std::chrono::duration<double> patience_;
  std::mutex mutex_;
  std::condition_variable hasIdleWorker_;
  std::vector<Worker> workers_;
  bool isEnding_ = false;
};

}  // namespace hcy::server
