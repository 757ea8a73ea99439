// SPDX-License-Identifier: Apache-2.0
//
// Where calls are evaluated. Small ones are, at once, by the thread that received them; others have
// threads of their own, and calculations that take long have more of them than any client needs, so
// that none has to wait for those of another to end.

#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "budget.h"
#include "call_log.h"
#include "fault_schedule.h"
#include "http_replies.h"
#include "service.h"

namespace hcy::server {

class CallThreads {
 public:
  // At most so many calls may calculate long, or sleep, at a time. So many threads are for foreign
  // functions.
  CallThreads(std::size_t mostLong, unsigned foreignThreads, Service& service,
              FaultSchedule& faults, CallLog& log);

  CallThreads(const CallThreads&) = delete;
  CallThreads& operator=(const CallThreads&) = delete;
  ~CallThreads();

  // Calls `done` with the reply, once, on this thread or another. The request, whose body is taken,
  // lives until then.
  void answer(HttpRequest& request, std::function<void(Reply)> done);

  // For a request that is refused before it has been read: the log.
  void noteRefusal(const HttpRequest& request, const Reply& reply);

  // Each is to be run by a thread that ends when the context is stopped.
  std::vector<boost::asio::io_context*> contexts();

 private:
  struct Task;

  void dispatch(Task task);
  bool takePlace(Task& task);
  void answerOutside(Task task);
  void sweepQueue(WorkQueue& queue);
  void awaitWorker(Task task, WorkQueue& queue);
  void begin(Task task);
  void evaluate(Task task);
  void end(Task task, Reply reply);

  Service& service_;
  FaultSchedule& faults_;
  CallLog& log_;
  Budget longCalls_;
  // In proportion to the size of their messages.
  boost::asio::io_context linear_;
  boost::asio::io_context long_;
  const unsigned foreignThreads_;
  boost::asio::io_context foreign_;
  boost::asio::steady_timer sweepTimer_{linear_};
  using WorkGuard = boost::asio::executor_work_guard<boost::asio::io_context::executor_type>;
  WorkGuard linearGuard_{linear_.get_executor()};
  WorkGuard longGuard_{long_.get_executor()};
  WorkGuard foreignGuard_{foreign_.get_executor()};
};

}  // namespace hcy::server
