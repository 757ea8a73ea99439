// SPDX-License-Identifier: Apache-2.0

#include "call_threads.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "faulty_replies.h"
#include "function_call.h"
#include "function_table.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;

// What is received and parsed in less than the hundredth of a second.
constexpr std::size_t kSmallBody = std::size_t{64} << 10;
constexpr unsigned kLongThreads = 16;
constexpr std::chrono::milliseconds kSweepTime{250};

}  // namespace

struct CallThreads::Task {
  HttpRequest* request;
  std::function<void(Reply)> done;
  std::unique_ptr<FunctionCall> call;
  // Among the long calls, if it is one.
  BudgetShare place;
  ScheduledFault fault{};
  std::optional<LoggedCall> logged{};
};

CallThreads::CallThreads(std::size_t mostLong, unsigned foreignThreads, Service& service,
                         FaultSchedule& faults, CallLog& log)
    : service_(service),
      faults_(faults),
      log_(log),
      longCalls_(mostLong),
      foreignThreads_(foreignThreads) {
  if (WorkQueue* const queue = service.queue()) sweepQueue(*queue);
}

// Calls that wait for a worker have taken places here.
CallThreads::~CallThreads() {
  if (WorkQueue* const queue = service_.queue()) queue->clear();
}

void CallThreads::sweepQueue(WorkQueue& queue) {
  sweepTimer_.expires_after(kSweepTime);
  sweepTimer_.async_wait([this, &queue](boost::system::error_code ec) {
    if (ec) return;
    queue.expire();
    sweepQueue(queue);
  });
}

void CallThreads::answer(HttpRequest& request, std::function<void(Reply)> done) {
  Task task{&request, std::move(done), nullptr, BudgetShare(longCalls_)};
  task.logged = log_.begin(request);
  if (isCall(request)) {
    task.fault = faults_.next(pathOf(request).substr(1));
    if (auto reply = replyInstead(task.fault, request)) {
      return end(std::move(task), std::move(*reply));
    }
  }
  dispatch(std::move(task));
}

void CallThreads::dispatch(Task task) {
  const HttpRequest& request = *task.request;
  const Function* const function = service_.ownFunction(request);
  const bool isSmall = request.body().size() <= kSmallBody;
  if (function != nullptr) {
    task.call = std::make_unique<FunctionCall>(*function);
    if (isSmall) return begin(std::move(task));
    asio::post(linear_, [this, task = std::move(task)]() mutable { begin(std::move(task)); });
  } else {
    if (isSmall) return answerOutside(std::move(task));
    asio::post(linear_,
               [this, task = std::move(task)]() mutable { answerOutside(std::move(task)); });
  }
}

// A place among the long calls. False if there is none left; then the call has been answered.
bool CallThreads::takePlace(Task& task) {
  if (task.place.growTo(1)) return true;
  end(std::move(task), overloaded("Too many long calls are running.\n"));
  return false;
}

// By something else than a function of this program.
void CallThreads::answerOutside(Task task) {
  if (WorkQueue* const queue = service_.queueOf(*task.request)) {
    return awaitWorker(std::move(task), *queue);
  }
  if (std::optional<Reply> reply = service_.answerAtOnce(*task.request)) {
    return end(std::move(task), std::move(*reply));
  }
  if (!takePlace(task)) return;
  asio::post(long_, [this, task = std::move(task)]() mutable {
    Reply reply = service_.answerByWaiting(*task.request);
    end(std::move(task), std::move(reply));
  });
}

// No thread waits meanwhile.
void CallThreads::awaitWorker(Task task, WorkQueue& queue) {
  if (!takePlace(task)) return;
  const auto waiting = std::make_shared<Task>(std::move(task));
  Service::answerByWorker(queue, *waiting->request, [this, waiting](Reply reply) {
    end(std::move(*waiting), std::move(reply));
  });
}

void CallThreads::begin(Task task) {
  if (std::optional<Reply> failure = failureToParse(*task.call, *task.request)) {
    return end(std::move(task), std::move(*failure));
  }
  if (!task.call->takesLong()) return evaluate(std::move(task));
  if (!takePlace(task)) return;
  asio::io_context& threads = task.call->isForeign() ? foreign_ : long_;
  asio::post(threads, [this, task = std::move(task)]() mutable { evaluate(std::move(task)); });
}

void CallThreads::evaluate(Task task) {
  Reply reply = replyTo(*task.call);
  // What the arguments took is free while the reply waits.
  task.call.reset();
  end(std::move(task), std::move(reply));
}

void CallThreads::end(Task task, Reply reply) {
  if (!task.fault.text.empty()) disturb(reply, task.fault);
  if (reply.delay > decltype(reply.delay)::zero()) {
    if (task.place.growTo(1)) {
      reply.place = std::move(task.place);
    } else {
      reply = overloaded("Too many calls are sleeping.\n");
    }
  }
  finish(reply, *task.request);
  if (task.logged) log_.end(*task.logged, reply);
  task.done(std::move(reply));
}

void CallThreads::noteRefusal(const HttpRequest& request, const Reply& reply) {
  if (const auto logged = log_.begin(request)) log_.end(*logged, reply);
}

std::vector<asio::io_context*> CallThreads::contexts() {
  std::vector<asio::io_context*> contexts(std::max(2U, std::thread::hardware_concurrency()),
                                          &linear_);
  contexts.insert(contexts.end(), kLongThreads, &long_);
  contexts.insert(contexts.end(), foreignThreads_, &foreign_);
  return contexts;
}

}  // namespace hcy::server
