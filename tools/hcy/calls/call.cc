// SPDX-License-Identifier: Apache-2.0

#include "calls/call.h"

#include <cstddef>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "arguments/argument.h"
#include "calls/evaluation.h"
#include "calls/exit_status.h"
#include "calls/incomplete_output.h"
#include "calls/outputs.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

void show(const hcyclient::FunctionError& error) {
  const std::string_view message = error.what();
  std::cerr << "hcy: "
            << (message.empty() ? "the function failed without a message"
                                : printableLines(message, 5))
            << '\n';
  if (!error.identifier().empty()) {
    std::cerr << "identifier: " << printable(error.identifier()) << '\n';
  }
  for (const hcyclient::StackFrame& frame : error.stack()) {
    std::cerr << "  in " << printable(frame.name) << ", " << printable(frame.file) << ", line "
              << frame.line << '\n';
  }
}

}  // namespace

int call(const Options& options) {
  requireHttp(options.url);
  requireOutputs(options.output, static_cast<std::size_t>(options.nargout));
  const std::vector<hcyclient::Array> inputs =
      arraysFrom(options.arguments, options.argumentSettings);
  const hcyclient::Library library;
  const hcyclient::Config config = configFrom(library, options.settings);
  const hcyclient::Context context(config);
  try {
    const auto outputs =
        evaluate(*library.runtime(), context, options.url, inputs, options.nargout);
    requireWhole(outputs);
    showOutputs(outputs, options.output);
    return kSuccess;
  } catch (const hcyclient::FunctionError& error) {
    show(error);
    return kFunctionError;
  } catch (const hcyclient::HttpError& error) {
    std::cerr << "hcy: " << printable(error.what()) << '\n';
    return kHttpError;
  }
}

}  // namespace hcy::tools
