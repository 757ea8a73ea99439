// SPDX-License-Identifier: Apache-2.0

#include "work_queue.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "function_error.h"
#include "overload.h"
#include "reply_room.h"
#include "serialized_error.h"
#include "work_messages.h"

namespace hcy::server {
namespace {

constexpr std::chrono::seconds kWorkerPatience{20};

// Whatever goes wrong is the reply.
template <class Make>
Reply replyFrom(std::string_view function, Make make) try {
  try {
    return make();
  } catch (const FunctionError& error) {
    return resultReply(serialized(error, function), Source::kCommand);
  }
} catch (const Overload& overload) {
  return overloaded(std::string(overload.what()) + "\n");
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
}

}  // namespace

WorkQueue::WorkQueue(std::string workerPath, double seconds)
    : workerPath_(std::move(workerPath)),
      patience_(
          std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))) {}

void WorkQueue::call(std::string_view name, std::string_view body, Done done) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::string(name), body, std::move(done)});
  }
  match();
}

void WorkQueue::work(std::string_view body, const Done& done) {
  const auto work = requestFieldsOf(body);
  if (!work) return done(badParams());
  std::optional<Call> answered;
  try {
    answered = callAnsweredBy(ticketIn(*work), done);
  } catch (const FunctionError& error) {
    return done(resultReply(serialized(error, workerPath_), Source::kServer));
  } catch (const std::bad_alloc&) {
    return done(overloaded(kNoMemory));
  }
  if (answered) {
    answered->done(replyFrom(answered->name, [&] {
      const auto asked = requestFieldsOf(answered->body);
      ByteBuffer result = resultIn(*work, asked ? asked->nargout : 0);
      BudgetShare room = takeReplyRoom(result.size(), answered->body.size());
      Reply reply = resultReply(std::move(result), Source::kCommand);
      reply.room = std::move(room);
      return reply;
    }));
  }
  match();
}

std::optional<WorkQueue::Call> WorkQueue::callAnsweredBy(std::uint64_t ticket, const Done& worker) {
  const std::lock_guard lock(mutex_);
  workers_.push_back({worker});
  const auto found = running_.find(ticket);
  if (found == running_.end()) return std::nullopt;
  Call call = std::move(found->second);
  running_.erase(found);
  return call;
}

void WorkQueue::match() {
  for (;;) {
    Call call;
    Done worker;
    std::uint64_t ticket = 0;
    std::optional<RequestFields> fields;
    {
      const std::lock_guard lock(mutex_);
      if (waiting_.empty() || workers_.empty()) return;
      call = std::move(waiting_.front());
      waiting_.pop_front();
      fields = requestFieldsOf(call.body);
      if (fields) {
        worker = std::move(workers_.front().done);
        workers_.pop_front();
        ticket = ++lastTicket_;
        running_.emplace(ticket, call);
      }
    }
    if (!fields) {
      call.done(badParams());
      continue;
    }
    worker(replyFrom(workerPath_, [&] {
      return resultReply(messageOfCall(ticket, call.name, *fields), Source::kServer);
    }));
  }
}

void WorkQueue::expire() {
  const auto now = Clock::now();
  const auto isOver = [now](const auto& one, Clock::duration patience) {
    return now - one.begin > patience;
  };
  std::vector<Call> calls;
  std::vector<Worker> workers;
  {
    const std::lock_guard lock(mutex_);
    for (; !waiting_.empty() && isOver(waiting_.front(), patience_); waiting_.pop_front()) {
      calls.push_back(std::move(waiting_.front()));
    }
    for (auto one = running_.begin(); one != running_.end();) {
      const bool ends = isOver(one->second, patience_);
      if (ends) calls.push_back(std::move(one->second));
      one = ends ? running_.erase(one) : std::next(one);
    }
    const auto patience = std::min<Clock::duration>(patience_, kWorkerPatience);
    for (; !workers_.empty() && isOver(workers_.front(), patience); workers_.pop_front()) {
      workers.push_back(std::move(workers_.front()));
    }
  }
  for (const Call& call : calls) {
    call.done(replyFrom(call.name, []() -> Reply {
      throw FunctionError("halcyon:function:ended", "No worker answered in time.");
    }));
  }
  for (const Worker& worker : workers) {
    worker.done(
        replyFrom(workerPath_, [] { return resultReply(messageOfNoCall(), Source::kServer); }));
  }
}

void WorkQueue::clear() {
  std::deque<Call> waiting;
  std::map<std::uint64_t, Call> running;
  std::deque<Worker> workers;
  const std::lock_guard lock(mutex_);
  waiting.swap(waiting_);
  running.swap(running_);
  workers.swap(workers_);
}

}  // namespace hcy::server
