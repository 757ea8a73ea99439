// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

#include "bench/bench.h"
#include "bodies/show.h"
#include "calls/call.h"
#include "calls/list.h"
#include "calls/transport_hint.h"
#include "results/exit_status.h"
#include "results/failure.h"
#include "settings/options.h"
#include "settings/settings.h"
#include "settings/target.h"
#include "text/text.h"

namespace {

using namespace hcy::tools;

// If standard input, output or error is closed, a connection would get its descriptor, and the
// output would go to the server. The replacement fails as a closed descriptor does.
void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) != -1) continue;
    // Opens the lowest free descriptor, which is this one.
    static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

int run(Options& options) {
  const bool hasUrl = options.command == Command::kCall || options.command == Command::kBench ||
                      options.command == Command::kList;
  if (hasUrl) {
    resolveTarget(options);
    requireReadableFiles(options.settings);
    requireReadableFiles(options.againstSettings);
  }
  switch (options.command) {
    case Command::kCall:
      return call(options);
    case Command::kBench:
      return bench(options);
    case Command::kList:
      return list(options);
    case Command::kEncode:
      return encode(options);
    case Command::kShow:
      return show(options);
  }
  return kUsage;
}

std::string hintFor(const Failure& failure, const Options& options) {
  if (failure.kind == "transport") return transportHint(failure.message, options);
  const bool hasNone = options.command == Command::kCall && options.arguments.empty();
  const char* const shell = std::getenv("SHELL");
  if (failure.kind != "function" || !hasNone || shell == nullptr) return {};
  // With the option nullglob, zsh removes a word in brackets that is the name of no file.
  return std::string_view(shell).ends_with("zsh")
             ? "\nThere were no arguments; in zsh, put one with brackets in quotes: '[1,2]'"
             : "";
}

// Becomes the local server, which is installed beside this program or found on the PATH. Returns
// only if there is none.
int serve(char** argv) {
  char name[] = "hcy-local-server";
  argv[1] = name;
  std::error_code unknown;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", unknown);
  if (!unknown) ::execv((self.parent_path() / name).c_str(), argv + 1);
  ::execvp(name, argv + 1);
  const bool isMissing = errno == ENOENT;
  std::cerr << "hcy: cannot start " << name << ": " << std::strerror(errno) << '\n';
  if (isMissing) {
    std::cerr << "     it is neither in " << printable(self.parent_path().string())
              << ", beside hcy, nor on the PATH\n";
  }
  return kTransportError;
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardDescriptors();
  // The options are those of the server.
  if (argc > 1 && std::string_view(argv[1]) == "serve") return serve(argv);
  if (argc > 2 && std::string_view(argv[1]) == "help" && std::string_view(argv[2]) == "serve") {
    char help[] = "--help";
    std::array<char*, 4> words = {argv[0], argv[2], help, nullptr};
    return serve(words.data());
  }
  CommandLine commandLine;
  try {
    commandLine = parseCommandLine(argc, argv);
    if (!commandLine.options) return commandLine.exitStatus;
    return run(*commandLine.options);
  } catch (...) {
    Failure failure = currentFailure();
    const bool isJson = commandLine.options && commandLine.options->isJson();
    // Programs get the message as it is.
    if (commandLine.options && !isJson) failure.message += hintFor(failure, *commandLine.options);
    std::cerr << failureAs(isJson, failure);
    return failure.exitStatus;
  }
}
