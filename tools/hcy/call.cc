// SPDX-License-Identifier: Apache-2.0

#include "call.h"

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "argument.h"
#include "array_json.h"
#include "display.h"
#include "exit_status.h"
#include "reply_size.h"
#include "settings.h"
#include "terminal.h"
#include "text.h"
#include "url.h"

namespace hcy::tools {
namespace {

void show(const std::vector<hcyclient::Array>& outputs, const Options& options) {
  const std::size_t width = options.width.value_or(widthOf(STDOUT_FILENO));
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const std::string name = outputs.size() == 1 ? "ans" : "out " + std::to_string(i + 1);
    print(options.asJson ? toJson(outputs[i]) + "\n" : display(name, outputs[i], width));
  }
}

void show(const hcyclient::FunctionError& error) {
  std::cerr << "hcy: " << printableLines(error.what(), 5)
            << "\nidentifier: " << printable(error.identifier()) << '\n';
  for (const hcyclient::StackFrame& frame : error.stack()) {
    std::cerr << "  in " << printable(frame.name) << ", " << printable(frame.file) << ", line "
              << frame.line << '\n';
  }
}

}  // namespace

int call(const Options& options) {
  requireHttp(options.url);
  const std::vector<hcyclient::Array> inputs = arraysFrom(options.arguments);
  const hcyclient::Library library;
  const hcyclient::Config config = configFrom(library, options.settings);
  hcyclient::Context context(config);
  try {
    const auto outputs = context.feval(options.url, inputs, options.nargout);
    requireNoMoreThanCame(outputs, largestReplyOf(config));
    show(outputs, options);
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
