// SPDX-License-Identifier: Apache-2.0

#include <sysexits.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "functions.h"
#include "options.h"
#include "server.h"
#include "text/source_text.h"

int main(int argc, char** argv) {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  try {
    const hcy::server::CommandLine commandLine = hcy::server::parseCommandLine(argc, argv);
    if (!commandLine.options) return commandLine.exitStatus;
    hcy::server::Server server(*commandLine.options, hcy::server::ownFunctions());
    std::cout << "listening on " << server.url() << std::endl;
    server.run();
    return EXIT_SUCCESS;
  } catch (const hcy::tools::BadInput& error) {
    std::cerr << "hcy-local-server: " << error.what() << '\n';
    return EX_USAGE;
  } catch (const std::exception& error) {
    std::cerr << "hcy-local-server: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
