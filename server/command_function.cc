// SPDX-License-Identifier: Apache-2.0

#include "command_function.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "call_values.h"
#include "function_error.h"
#include "overload.h"
#include "reply_room.h"
#include "serialized_error.h"

namespace hcy::server {
namespace {

constexpr char kFunctionAnswer[] = "halcyon:function:answer";
constexpr char kFunctionEnded[] = "halcyon:function:ended";
constexpr std::size_t kLongestRequest = std::size_t{64} << 20;
constexpr std::chrono::seconds kFarewellTime{1};

FunctionError failure(const char* identifier, const std::string& message) {
  return {identifier, message};
}

}  // namespace

CommandFunction::CommandFunction(std::string name, std::string command, unsigned workers,
                                 double patience)
    : name_(std::move(name)), command_(std::move(command)), patience_(patience) {
  for (unsigned i = 0; i < workers; ++i) {
    workers_.push_back({std::make_shared<CommandProcess>(command_)});
  }
}

CommandFunction::~CommandFunction() = default;

Reply CommandFunction::call(std::string_view request) try {
  ByteBuffer result = answerTo(request);
  BudgetShare room = takeReplyRoom(result.size(), request.size());
  Reply reply = resultReply(std::move(result), Source::kCommand);
  reply.room = std::move(room);
  return reply;
} catch (const FunctionError& error) {
  return resultReply(serialized(error, name_), Source::kCommand);
} catch (const CommandFailure& error) {
  return resultReply(serialized(failure(kFunctionEnded, error.what()), name_), Source::kCommand);
} catch (const BadAnswer& error) {
  const std::string message = std::string("The command's answer is invalid: ") + error.what();
  return resultReply(serialized(failure(kFunctionAnswer, message), name_), Source::kCommand);
} catch (const std::bad_alloc&) {
  return resultReply(serialized(noMemoryForCall(), name_), Source::kCommand);
} catch (const Overload& overload) {
  return overloaded(std::string(overload.what()) + "\n");
} catch (const std::exception& error) {
  return serverFault(boost::beast::http::status::internal_server_error, error.what());
}

ByteBuffer CommandFunction::answerTo(std::string_view request) {
  if (request.size() > kLongestRequest) {
    throw failure(kArgumentSize, "The inputs take more than 64 MiB, the limit for a command.");
  }
  const std::optional<ShownRequest> shown = showRequest(request);
  if (!shown) throw failure(kArgumentValue, "The request is broken.");
  if (shown->nargout < 0) throw failure(kArgumentCount, "nargout is negative.");
  std::string line;
  try {
    line = lineOfCall(name_, *shown);
  } catch (const BadAnswer& error) {
    throw failure(kArgumentValue, std::string("This call is not for a command: ") + error.what());
  }
  const ByteBuffer answer = ask(line);
  return resultOfLine({answer.data(), answer.size()}, shown->nargout);
}

ByteBuffer CommandFunction::ask(std::string_view line) {
  Worker& worker = take();
  try {
    ByteBuffer answer = readyProcess(worker)->ask(line, patience_);
    giveBack(worker);
    return answer;
  } catch (...) {
    {
      const std::lock_guard lock(mutex_);
      worker.process.reset();
    }
    giveBack(worker);
    throw;
  }
}

CommandFunction::Worker& CommandFunction::take() {
  std::unique_lock lock(mutex_);
  for (;;) {
    if (isEnding_) throw CommandFailure("The server is stopping.");
    const auto idle = std::ranges::find(workers_, false, &Worker::isBusy);
    if (idle != workers_.end()) {
      idle->isBusy = true;
      return *idle;
    }
    hasIdleWorker_.wait(lock);
  }
}

void CommandFunction::giveBack(Worker& worker) {
  const std::lock_guard lock(mutex_);
  worker.isBusy = false;
  hasIdleWorker_.notify_one();
}

// Starts the command again if it has failed, or ended since the last call.
std::shared_ptr<CommandProcess> CommandFunction::readyProcess(Worker& worker) {
  const std::lock_guard lock(mutex_);
  if (isEnding_) throw CommandFailure("The server is stopping.");
  if (!worker.process || !worker.process->isReady()) {
    worker.process = std::make_shared<CommandProcess>(command_);
  }
  return worker.process;
}

void CommandFunction::end() {
  std::vector<std::shared_ptr<CommandProcess>> processes;
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    hasIdleWorker_.notify_all();
    for (const Worker& worker : workers_) {
      if (worker.process) processes.push_back(worker.process);
    }
  }
  const auto all = [&](int number) {
    for (const auto& process : processes) process->signal(number);
  };
  const auto deadline = std::chrono::steady_clock::now() + kFarewellTime;
  all(SIGTERM);
  while (!std::ranges::all_of(processes, &CommandProcess::hasEnded) &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  all(SIGKILL);
}

}  // namespace hcy::server
