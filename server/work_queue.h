// SPDX-License-Identifier: Apache-2.0
//
// Functions that other programs answer. Such a program, a worker, calls a path of its own: it hands
// over what it has computed and gets the next call, as soon as there is one. Arrays pass through
// as they are.
//
// Inputs of a worker's call: the ticket of the call that it answers (0 for none), then "outputs"
// and the outputs, or "error", identifier, message and a cell of file, name, line, file, ... Its
// output is a cell of the next ticket, the name of the function, nargout, and the inputs; an empty
// cell if there was no call for a while, so that a worker that has gone away does not take one with
// it for long.

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "http_replies.h"

namespace hcy::server {

// All functions may be called by several threads at once.
class WorkQueue {
 public:
  using Done = std::function<void(Reply)>;

  // Where workers call; nowhere if it is empty.
  // A call is answered within so many seconds, if only by an error.
  WorkQueue(std::string workerPath, double seconds);

  void serve(const std::string& function) { functions_.insert(function); }
  const std::set<std::string>& functions() const { return functions_; }

  bool isWorker(std::string_view name) const { return !workerPath_.empty() && name == workerPath_; }
  bool serves(std::string_view name) const { return functions_.contains(std::string(name)); }

  // A call of a function. The body lives until `done` is called, by this thread or another one.
  void call(std::string_view name, std::string_view body, Done done);

  // A call of a worker. The body is not needed any more when this returns.
  void work(std::string_view body, const Done& done);

  // To be called now and then: ends what has waited too long.
  void expire();

  // Forgets all calls and workers. For the end of the server.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  struct Call {
    std::string name;
    std::string_view body;
    Done done;
    Clock::time_point begin = Clock::now();
  };
  struct Worker {
    Done done;
    Clock::time_point begin = Clock::now();
  };

  // Has the worker wait for a call; the call that it answers with this ticket, if there is one.
  std::optional<Call> callAnsweredBy(std::uint64_t ticket, const Done& worker);
  // Gives calls to workers as long as there are both.
  void match();

  const std::string workerPath_;
  const Clock::duration patience_;
  std::set<std::string> functions_;
  std::mutex mutex_;
  std::deque<Call> waiting_;
  std::deque<Worker> workers_;
  // By ticket.
  std::map<std::uint64_t, Call> running_;
  std::uint64_t lastTicket_ = 0;
};

}  // namespace hcy::server
