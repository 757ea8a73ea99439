// SPDX-License-Identifier: Apache-2.0
//
// The command line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "arguments/argument.h"
#include "settings/output_settings.h"
#include "settings/tls_settings.h"

namespace hcy::tools {

// The settings of a connection; those that are absent have the defaults of the library.
struct Settings : TlsSettings {
  std::optional<double> timeout;              // seconds
  std::optional<std::uint32_t> largestReply;  // bytes
  bool asksPassPhrase = false;
};

inline constexpr std::uint64_t kUsualCalls = 1000;

enum class Command { kCall, kBench, kList, kEncode, kShow };
enum class Body { kDetected, kRequest, kReply };

struct Options {
  Command command = Command::kCall;

  // call and bench
  std::string url;
  std::vector<std::string> arguments;
  ArgumentSettings argumentSettings;
  int nargout = 1;
  Settings settings;

  // call
  OutputSettings output;
  bool isVerbose = false;
  std::string requestFile, replyFile;  // where the bodies are saved
  unsigned retries = 0;
  std::optional<std::string> each;  // the file with a call on each line
  unsigned jobs = 1;

  // bench
  std::optional<std::uint64_t> calls;  // kUsualCalls, or as many as fit into the duration
  unsigned threads = 1;
  std::uint64_t warmUps = 0;
  double duration = 0, rate = 0;  // seconds and calls per second; 0 for no limit
  bool showsHistogram = false;
  std::string against;  // another URL, called in turns
  Settings againstSettings;

  // show
  std::string file;
  Body body = Body::kDetected;
  bool showsSchema = false;

  // Whether the bodies or times of a call are requested.
  bool isOpen() const { return isVerbose || !requestFile.empty() || !replyFile.empty(); }

  // Whether outputs and failures are JSON.
  bool isJson() const { return output.form == Form::kJson; }
};

struct CommandLine {
  // Absent if there is nothing to do: help or version was printed, or an option is wrong.
  std::optional<Options> options;
  int exitStatus = 0;
};

CommandLine parseCommandLine(int argc, char** argv);

}  // namespace hcy::tools
