// SPDX-License-Identifier: Apache-2.0

#include <exception>
#include <hcy/hcyclient.hpp>
#include <iostream>
#include <new>

#include "bench.h"
#include "call.h"
#include "exit_status.h"
#include "options.h"
#include "show.h"
#include "source_text.h"
#include "text.h"

namespace {

using namespace hcy::tools;

int run(const Options& options) {
  switch (options.command) {
    case Command::kCall:
      return call(options);
    case Command::kBench:
      return bench(options);
    case Command::kShow:
      return show(options);
  }
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const CommandLine commandLine = parseCommandLine(argc, argv);
    return commandLine.options ? run(*commandLine.options) : commandLine.exitStatus;
  } catch (const BadInput& problem) {
    std::cerr << "hcy: " << problem.what() << '\n';
    return kUsage;
  } catch (const std::bad_alloc&) {
    std::cerr << "hcy: there is not enough memory\n";
  } catch (const std::exception& error) {
    std::cerr << "hcy: " << printableLines(error.what(), 5) << '\n';
  }
  return kTransportError;
}
