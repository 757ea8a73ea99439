// SPDX-License-Identifier: Apache-2.0

#include "calls/call.h"

#include <cstddef>
#include <iostream>
#include <vector>

#include "arguments/argument.h"
#include "calls/each.h"
#include "calls/outputs.h"
#include "calls/retry.h"
#include "calls/shown_url.h"
#include "calls/similar_function.h"
#include "calls/traced_call.h"
#include "results/evaluation.h"
#include "results/exit_status.h"
#include "results/failure.h"
#include "results/incomplete_output.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/file_replacement.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

// With -v, shows a line before each retry.
void showRetry(const hcyclient::CallError& problem, double seconds) {
  const std::string message = problem.what();
  std::cerr << "* " << printable(message.substr(0, message.find('\n'))) << "; retrying in "
            << seconds << " s\n";
}

// The library takes a page for a reply without outputs, and only -v sees the reply itself.
[[noreturn]] void throwWithHint(const hcyclient::TransportError& error) {
  const std::string message = error.what();
  if (!message.starts_with("Number of outputs received from VORTEN, 0,")) throw;
  throw hcyclient::TransportError(message +
                                  " The reply may be an HTML page of a gateway or of another "
                                  "server; use hcy call -v to see.");
}

std::vector<hcyclient::Array> outputsOfCall(const hcyclient::Library& library,
                                            const hcyclient::Config& config,
                                            const std::vector<hcyclient::Array>& inputs,
                                            const Options& options) {
  // The library itself has no timeout in fractions of a second, and does not tell how long to wait
  // before a retry.
  if (options.isOpen() || options.retries > 0 || fractionalLimit(options.settings.timeout) > 0) {
    return callWithRetries(
        options.retries, [&] { return tracedCall(library, config, inputs, options); },
        [&](const hcyclient::CallError& problem, double seconds) {
          if (options.isVerbose) showRetry(problem, seconds);
        });
  }
  const hcyclient::Context context(config);
  try {
    return evaluate(*library.runtime(), context, options.url, handlesOf(inputs), options.nargout);
  } catch (const hcyclient::TransportError& error) {
    throwWithHint(error);
  }
}

bool namesNoFunction(const std::string& url) { return rootOf(url).size() >= url.size(); }

// Shows the 404 or 405 that is being handled, and which function the user may have meant.
int showUnknownFunction(hcyclient::Config& config, const Options& options) {
  Failure failure = currentFailure();
  if (namesNoFunction(options.url)) {
    failure.message +=
        "; the URL names no function, but only the server: hcy list shows its functions";
    std::cerr << failureText(failure);
    return failure.exitStatus;
  }
  if (options.isVerbose) std::cerr << "* GET " << shownUrl(rootOf(options.url)) << "\n";
  failure.message += functionSuggestion(config, options.url, options.settings.timeout.value_or(0));
  std::cerr << failureText(failure);
  return failure.exitStatus;
}

}  // namespace

int call(const Options& options) {
  if (options.each) return callEach(options);
  requireHttp(options.url);
  requireOutputs(options.output, static_cast<std::size_t>(options.nargout));
  for (const std::string& file : {options.requestFile, options.replyFile}) {
    if (!file.empty()) requireWritable(file);
  }
  const std::vector<hcyclient::Array> inputs =
      arraysFrom(options.arguments, options.argumentSettings);
  const hcyclient::Library library;
  hcyclient::Config config = configFrom(library, options.settings);
  try {
    const auto outputs = outputsOfCall(library, config, inputs, options);
    requireWhole(outputs);
    showOutputs(outputs, options.output);
  } catch (const hcyclient::HttpError& error) {
    if (options.isJson()) throw;
    // A server may answer so at its root, where only its index is.
    const bool isAtRoot = error.status() == 405 && namesNoFunction(options.url);
    if (error.status() != 404 && !isAtRoot) throw;
    return showUnknownFunction(config, options);
  }
  return kSuccess;
}

}  // namespace hcy::tools
