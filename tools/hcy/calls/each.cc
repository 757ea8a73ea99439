// SPDX-License-Identifier: Apache-2.0

#include "calls/each.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "arguments/argument.h"
#include "arguments/argument_words.h"
#include "calls/broken_pipe.h"
#include "calls/each_lines.h"
#include "calls/retry.h"
#include "calls/similar_function.h"
#include "calls/threads.h"
#include "notations/array_json.h"
#include "notations/json_array.h"
#include "notations/json_list.h"
#include "notations/json_value.h"
#include "notations/raw_text.h"
#include "results/evaluation.h"
#include "results/exit_status.h"
#include "results/failure.h"
#include "results/incomplete_output.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/source_text.h"

namespace hcy::tools {
namespace {

using hcyclient::Array;

// How many answers of a thread can wait for an earlier one.
constexpr std::uint64_t kAheadPerJob = 256;

// How large all of them together can be before threads wait.
constexpr std::size_t kBytesAhead = std::size_t{64} << 20;

std::vector<Array> argumentsOf(const Line& line) {
  try {
    const JsonValue value = parseJson(line.text);
    const auto* const list = value.as<JsonList>();
    if (list == nullptr)
      throw BadText(value.offset, "a line must be a list of arguments, such as [1, \"x\"]");
    std::vector<Array> arrays;
    for (const JsonValue& item : *list) arrays.push_back(arrayFrom(item));
    return arrays;
  } catch (const BadText& problem) {
    throw BadInput(locatedInLine(line.text, problem));
  }
}

std::string printed(const std::vector<Array>& outputs, Form form) {
  if (outputs.size() != 1) return jsonList(outputs);
  return form == Form::kRaw ? rawText(outputs[0]) : toJson(outputs[0]) + "\n";
}

// What the threads share.
struct Shared {
  const Options& options;
  const std::vector<Array>& inputs;  // before those of each line
  LineSource& lines;
  AnswerSink& answers;
  std::atomic<bool>& isUnknown;  // whether the server answered with 404
};

class Caller {
 public:
  Caller(const Shared& shared, const hcyclient::Config& config)
      : shared_(shared), runtime_(*config.runtime()), context_(config) {}

  void run() {
    try {
      while (const auto line = shared_.lines.next()) {
        if (!shared_.answers.awaitRoom(line->index)) return;
        shared_.answers.put(line->index, answerTo(*line));
      }
    } catch (...) {
      shared_.answers.fail(std::current_exception());
    }
  }

 private:
  Answer answerTo(const Line& line) {
    const Options& options = shared_.options;
    try {
      const std::vector<Array> own = argumentsOf(line);
      std::vector<const hcyArray*> sent;
      for (const auto* const arrays : {&shared_.inputs, &own}) {
        for (const Array& array : *arrays) sent.push_back(array.get());
      }
      const auto outputs =
          evaluateWithRetries(runtime_, context_, options.url, sent, options.nargout,
                              fractionalLimit(options.settings.timeout), options.retries);
      requireWhole(outputs);
      return {printed(outputs, options.output.form.value_or(Form::kJson)), {}, kSuccess};
    } catch (...) {
      Failure failure = currentFailure();
      failure.line = line.number;
      if (failure.httpStatus == 404U) shared_.isUnknown = true;
      return {"null\n", failureAs(options.isJson(), failure), failure.exitStatus};
    }
  }

  const Shared& shared_;
  const hcyClientRuntime& runtime_;
  hcyclient::Context context_;
};

bool readsInput(const std::string& argument) {
  try {
    return argumentWords(argument).file == "-";
  } catch (const BadText&) {
    return false;  // arraysFrom() says what is wrong
  }
}

void requireOneReader(const Options& options) {
  const auto& arguments = options.arguments;
  const auto found = std::find_if(arguments.begin(), arguments.end(), readsInput);
  if (*options.each != "-" || found == arguments.end()) return;
  throw BadInput("argument " + std::to_string(found - arguments.begin() + 1) +
                 ": the standard input can be read only once, and --each reads it");
}

void requireForm(const Options& options) {
  const Form form = options.output.form.value_or(Form::kJson);
  if ((form != Form::kJson && form != Form::kRaw) || !options.output.files.empty()) {
    throw BadInput("--each prints JSON, or text with --raw; write it to a file with > FILE");
  }
}

AnswerCounts countsOf(AnswerSink& answers, const IgnoredBrokenPipes& pipes) try {
  return answers.finish();
} catch (const std::system_error& problem) {
  pipes.endIfBroken(problem);
  throw;
}

}  // namespace

int callEach(const Options& options) {
  requireHttp(options.url);
  requireForm(options);
  requireOneReader(options);
  const std::vector<Array> inputs = arraysFrom(options.arguments, options.argumentSettings);
  LineSource lines(*options.each);
  const hcyclient::Library library;
  hcyclient::Config config = configFrom(library, options.settings);
  const IgnoredBrokenPipes pipes;
  AnswerSink answers(lines.count(), {kAheadPerJob * options.jobs, kBytesAhead});
  std::atomic<bool> isUnknown = false;
  const Shared shared{options, inputs, lines, answers, isUnknown};
  std::vector<std::unique_ptr<Caller>> callers;
  for (unsigned i = 0; i < options.jobs; ++i) {
    callers.push_back(std::make_unique<Caller>(shared, config));
  }
  {
    const Threads threads(options.jobs, [&callers](unsigned i) { callers[i]->run(); });
  }
  const AnswerCounts counts = countsOf(answers, pipes);
  if (counts.failed > 0 && !options.isJson()) {
    const double limit = options.settings.timeout.value_or(0);
    std::cerr << "hcy: " << counts.failed << " of " << counts.calls
              << (counts.calls == 1 ? " call" : " calls") << " failed"
              << (isUnknown ? functionSuggestion(config, options.url, limit) : "") << '\n';
  }
  return counts.firstFailure;
}

}  // namespace hcy::tools
