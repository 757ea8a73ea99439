// SPDX-License-Identifier: Apache-2.0

#include "service.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "function_table.h"

namespace hcy::server {
namespace {

constexpr std::string_view kByWorkers = "@";

std::string_view nameOf(const HttpRequest& request) {
  const std::string_view path = pathOf(request);
  return path.substr(path.starts_with('/') ? 1 : 0);
}

}  // namespace

Service::Service(const Options& options, std::vector<Function> functions)
    : functions_(std::move(functions)),
      queue_(options.commands.workerPath, options.commands.seconds),
      standIn_(options) {
  for (const std::string& text : options.commands.functions) {
    const std::size_t sign = text.find('=');
    const std::string name = text.substr(0, sign), command = text.substr(sign + 1);
    if (command == kByWorkers) {
      if (options.commands.workerPath.empty()) {
        throw std::runtime_error("--function " + text + " needs --worker-path");
      }
      queue_.serve(name);
    } else {
      commands_.emplace_back(name, command, options.commands.workers, options.commands.seconds);
    }
  }
}

Service::~Service() = default;

WorkQueue* Service::queueOf(const HttpRequest& request) {
  const std::string_view name = nameOf(request);
  if (!isCall(request)) return nullptr;
  return queue_.serves(name) || queue_.isWorker(name) ? &queue_ : nullptr;
}

void Service::answerByWorker(WorkQueue& queue, const HttpRequest& request, WorkQueue::Done done) {
  const std::string_view name = nameOf(request);
  const std::string_view body(request.body().data(), request.body().size());
  if (queue.serves(name)) return queue.call(name, body, std::move(done));
  queue.work(body, done);
}

const Function* Service::ownFunction(const HttpRequest& request) const {
  if (!isCall(request) || standIn_.isActive()) return nullptr;
  const std::string_view name = nameOf(request);
  const auto isCommand = [name](const CommandFunction& one) { return one.name() == name; };
  if (std::ranges::any_of(commands_, isCommand)) return nullptr;
  const auto found = std::ranges::find(functions_, name, &Function::path);
  return found == functions_.end() ? nullptr : &*found;
}

CommandFunction* Service::commandOf(const HttpRequest& request) {
  const auto found = std::ranges::find(commands_, nameOf(request), &CommandFunction::name);
  return found == commands_.end() ? nullptr : &*found;
}

std::optional<Reply> Service::answerAtOnce(const HttpRequest& request) {
  if (!isCall(request)) return replyWithoutCall(request, listed());
  if (commandOf(request) != nullptr) return std::nullopt;
  if (standIn_.isActive()) return standIn_.answerAtOnce(request);
  return replyWithoutCall(request, listed());
}

Reply Service::answerByWaiting(const HttpRequest& request) try {
  CommandFunction* const command = commandOf(request);
  if (command == nullptr) return standIn_.ask(request);
  return command->call({request.body().data(), request.body().size()});
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
}

void Service::end() {
  for (CommandFunction& command : commands_) command.end();
  standIn_.finish();
}

std::vector<ListedFunction> Service::listed() const {
  std::vector<ListedFunction> all;
  for (const CommandFunction& command : commands_) {
    all.push_back({command.name(), "any arrays", "those of the command: " + command.command()});
  }
  for (const std::string& function : queue_.functions()) {
    all.push_back({function, "any arrays", "those of a worker"});
  }
  for (const auto& [path, count] : standIn_.paths()) {
    all.push_back({path.substr(path.starts_with('/') ? 1 : 0), "as recorded",
                   std::to_string(count) + (count == 1 ? " recorded call" : " recorded calls")});
  }
  if (standIn_.isActive()) return all;
  for (const Function& function : functions_) {
    if (std::ranges::find(all, function.path, &ListedFunction::name) != all.end()) continue;
    all.push_back({function.path, function.arguments, function.outputs});
  }
  return all;
}

}  // namespace hcy::server
