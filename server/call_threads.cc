// SPDX-License-Identifier: Apache-2.0

#include "call_threads.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <optional>
#include <thread>
#include <utility>

#include "function_call.h"

namespace hcy::server {
namespace {

namespace asio = boost::asio;

// What is received and parsed in less than the hundredth of a second.
constexpr std::size_t kSmallBody = std::size_t{64} << 10;
constexpr unsigned kLongThreads = 16;

}  // namespace

struct CallThreads::Task {
  HttpRequest* request;
  std::function<void(Reply)> done;
  std::unique_ptr<FunctionCall> call;
  // Among the long calls, if it is one.
  BudgetShare place;
};

CallThreads::CallThreads(std::size_t mostLong) : longCalls_(mostLong) {}

void CallThreads::answer(HttpRequest& request, std::function<void(Reply)> done) {
  const Function* function = functionCalledBy(request);
  Task task{&request, std::move(done), nullptr, BudgetShare(longCalls_)};
  if (function == nullptr) return end(std::move(task), replyWithoutCall(request));
  task.call = std::make_unique<FunctionCall>(*function);
  if (request.body().size() <= kSmallBody) return begin(std::move(task));
  asio::post(linear_, [this, task = std::move(task)]() mutable { begin(std::move(task)); });
}

void CallThreads::begin(Task task) {
  if (std::optional<Reply> failure = failureToParse(*task.call, *task.request)) {
    return end(std::move(task), std::move(*failure));
  }
  if (!task.call->takesLong()) return evaluate(std::move(task));
  if (!task.place.growTo(1)) {
    return end(std::move(task), overloaded("Too many calls take long.\n"));
  }
  asio::post(long_, [this, task = std::move(task)]() mutable { evaluate(std::move(task)); });
}

void CallThreads::evaluate(Task task) {
  Reply reply = replyTo(*task.call);
  // What the arguments took is free while the reply waits.
  task.call.reset();
  if (reply.delay > decltype(reply.delay)::zero()) {
    if (!task.place.growTo(1)) return end(std::move(task), overloaded("Too many calls sleep.\n"));
    reply.place = std::move(task.place);
  }
  end(std::move(task), std::move(reply));
}

void CallThreads::end(Task task, Reply reply) {
  finish(reply, *task.request);
  task.done(std::move(reply));
}

std::vector<asio::io_context*> CallThreads::contexts() {
  std::vector<asio::io_context*> contexts(std::max(2U, std::thread::hardware_concurrency()),
                                          &linear_);
  contexts.insert(contexts.end(), kLongThreads, &long_);
  return contexts;
}

}  // namespace hcy::server
