// SPDX-License-Identifier: Apache-2.0
//
// Who answers which call: a command, a recorded call or another server, or a function of this
// program.

#pragma once

#include <list>
#include <optional>
#include <string_view>
#include <vector>

#include "command_function.h"
#include "http_replies.h"
#include "listed_function.h"
#include "options.h"
#include "stand_in.h"
#include "work_queue.h"

namespace hcy::server {

struct Function;

// All functions may be called by several threads at once.
class Service {
 public:
  // Throws std::exception if a command, a folder or a server is of no use.
  Service(const Options& options, std::vector<Function> functions);
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  ~Service();

  // The function of this program that the request calls; null if there is none.
  const Function* ownFunction(const HttpRequest& request) const;

  // The calls that wait for a program; null if there is no such program.
  WorkQueue* queue() { return queue_.functions().empty() ? nullptr : &queue_; }
  // Where calls wait for a program to answer them; null if the request is not for it.
  WorkQueue* queueOf(const HttpRequest& request);
  // Calls `done` with the reply, soon or late.
  static void answerByWorker(WorkQueue& queue, const HttpRequest& request, WorkQueue::Done done);

  // For a request that calls none: the reply, or nothing if it takes waiting.
  std::optional<Reply> answerAtOnce(const HttpRequest& request);
  Reply answerByWaiting(const HttpRequest& request);

  // Ends commands. For the end of the server.
  void end();

 private:
  CommandFunction* commandOf(const HttpRequest& request);
  std::vector<ListedFunction> listed() const;

  const std::vector<Function> functions_;
  std::list<CommandFunction> commands_;
  WorkQueue queue_;
  StandIn standIn_;
};

}  // namespace hcy::server
