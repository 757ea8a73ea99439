// SPDX-License-Identifier: Apache-2.0
//
// A server inside of a program, which answers calls by functions of the program.

#include <pthread.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "function_error.h"
#include "function_table.h"
#include "hcy/hcyclient_server.h"
#include "options.h"
#include "server.h"

namespace hcy::server {
namespace {

// What a function of the program has answered so far.
struct Answer {
  Call& call;
  std::optional<FunctionError> error;
  bool isOutOfMemory = false;
};

// The handles of the inputs, which the function may take.
class Inputs {
 public:
  explicit Inputs(std::vector<Value>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      const hcyArray* const array = values[i].array.get();
      if (array == nullptr) refuse(kArgumentClass, i, "of an unknown class");
      if (!values[i].isColumnMajor) refuse(kArgumentValue, i, "not column-major");
      if (!hcyclient::detail::isWhole(array)) {
        refuse(kArgumentValue, i, "incomplete: " + hcyclient::detail::lackOf(array));
      }
    }
    handles_.reserve(values.size());
    for (Value& value : values) handles_.push_back(value.array.release());
  }
  Inputs(const Inputs&) = delete;
  Inputs& operator=(const Inputs&) = delete;
  ~Inputs() {
    for (hcyArray* const handle : handles_) hcyDestroyArray(handle);
  }

  std::vector<hcyArray*>& handles() { return handles_; }

 private:
  [[noreturn]] static void refuse(const char* identifier, std::size_t index,
                                  const std::string& what) {
    throw FunctionError(identifier, "Input " + std::to_string(index + 1) + " is " + what + ".");
  }

  std::vector<hcyArray*> handles_;
};

void answer(const hcyServedFunction& function, Call& call) {
  Inputs inputs(call.inputs);
  Answer answer{call, std::nullopt};
  hcyServedCall served{call.nargout, inputs.handles().size(), inputs.handles().data(), &answer};
  function.call(function.context, &served);
  if (answer.isOutOfMemory) throw std::bad_alloc();
  if (answer.error) throw FunctionError(*answer.error);
  if (std::cmp_less(call.outputs.size(), call.nargout)) {
    throw missingOutputs(call.outputs.size(), static_cast<std::size_t>(call.nargout));
  }
}

std::vector<Function> foreignFunctions(const hcyServedFunction* functions, std::size_t count) {
  std::vector<Function> made;
  for (std::size_t i = 0; i < count; ++i) {
    Function& function = made.emplace_back();
    function.path = functions[i].name;
    function.evaluate = [one = functions[i]](Call& call) { answer(one, call); };
    function.arguments = "any arrays";
    function.outputs = "those of the program";
    function.isForeign = true;
  }
  return made;
}

Options optionsFrom(int count, const char* const* texts, unsigned threads) {
  std::vector<std::string> words = {"hcy-local-server"};
  if (count > 0) words.insert(words.end(), texts, texts + count);
  std::vector<char*> argv;
  argv.reserve(words.size());
  for (std::string& word : words) argv.push_back(word.data());
  const CommandLine line = parseCommandLine(static_cast<int>(argv.size()), argv.data());
  if (!line.options) throw std::runtime_error("the options of the server are wrong");
  Options options = *line.options;
  if (options.stopOnEof) throw std::runtime_error("--stop-on-eof is for hcy-local-server alone");
  options.ownsProcess = false;
  options.functionThreads = threads;
  return options;
}

// A connection or a command that ends early is no reason to end the program.
void ignoreBrokenPipes() {
  sigset_t pipe;
  ::sigemptyset(&pipe);
  ::sigaddset(&pipe, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
}

}  // namespace
}  // namespace hcy::server

struct hcyServer {
  hcyServer(const hcy::server::Options& options, std::vector<hcy::server::Function> functions)
      : server(options, std::move(functions)), url(server.url()), thread([this] { run(); }) {
    started.get_future().get();
  }

  hcy::server::Server server;
  const std::string url;
  // Whether all threads have been started, or why not.
  std::promise<void> started;
  std::jthread thread;

 private:
  void run() try {
    hcy::server::ignoreBrokenPipes();
    server.run([this] { started.set_value(); });
  } catch (const std::system_error&) {
    started.set_exception(std::current_exception());
  }
};

hcyServer* hcyServerStart(const hcyServedFunction* functions, size_t count, unsigned threads,
                          int noptions, const char* const* options, char** message) try {
  *message = nullptr;
  if (threads == 0) throw std::runtime_error("a server needs at least one thread");
  hcy::server::requireMatchingLibrary();
  return new hcyServer(hcy::server::optionsFrom(noptions, options, threads),
                       hcy::server::foreignFunctions(functions, count));
} catch (const std::exception& error) {
  *message = ::strdup(error.what());
  return nullptr;
}

const char* hcyServerUrl(const hcyServer* server) { return server->url.c_str(); }

void hcyServerStop(hcyServer* server) {
  if (server == nullptr) return;
  server->server.stop();
  server->thread.join();
  delete server;
}

int hcyServedOutput(hcyServedCall* call, hcyArray* output) {
  auto& answer = *static_cast<hcy::server::Answer*>(call->internal);
  try {
    if (output == nullptr) throw std::bad_alloc();
    answer.call.add(hcy::server::Array::adopt(output));
    return 0;
  } catch (const std::bad_alloc&) {
    answer.isOutOfMemory = true;
    return 1;
  }
}

int hcyServedError(hcyServedCall* call, const char* identifier, const char* message, size_t depth,
                   const hcyErrorStackFrame* stack) {
  using hcy::server::StackFrame;
  auto& answer = *static_cast<hcy::server::Answer*>(call->internal);
  try {
    std::vector<StackFrame> frames;
    for (std::size_t i = 0; i < depth; ++i) {
      frames.push_back({stack[i].file, stack[i].name, static_cast<int>(stack[i].line)});
    }
    if (frames.empty()) frames.emplace_back();
    answer.error.emplace(identifier, message, frames);
    return 0;
  } catch (const std::bad_alloc&) {
    answer.isOutOfMemory = true;
    return 1;
  }
}
