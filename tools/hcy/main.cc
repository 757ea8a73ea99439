// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <exception>
#include <hcy/hcyclient.hpp>
#include <iostream>
#include <new>

#include "bench/bench.h"
#include "bodies/show.h"
#include "calls/call.h"
#include "calls/exit_status.h"
#include "settings/options.h"
#include "text/source_text.h"
#include "text/text.h"

namespace {

using namespace hcy::tools;

// Where standard input, output or error is closed, a connection would take its place, and what is
// printed would go to the server. What stands in for it fails as the closed one would.
void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) != -1) continue;
    // The lowest that is free, which is this one.
    static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

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
  occupyStandardDescriptors();
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
