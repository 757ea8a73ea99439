// SPDX-License-Identifier: Apache-2.0
//
// The command line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault_schedule.h"
#include "settings/tls_settings.h"

namespace hcy::server {

// Protocol Buffers messages end at 2 GiB - 1, so longer bodies would be of no use.
inline constexpr std::uint64_t kLargestBody = 2147483647;

// Another server, and how it is called.
struct UpstreamOptions {
  std::string url;
  // Its first line is "name:password"; empty for none.
  std::string userFile;
  double seconds = 120;
  tools::TlsSettings tls;
};

struct LogOptions {
  // "-" for the standard error; no log if absent.
  std::optional<std::string> file;
  bool isJson = false;
  bool showsValues = false;
  // What each value is cut to.
  std::size_t width = 60;
};

struct CommandOptions {
  // NAME=COMMAND; a command of @ stands for workers that call the path below.
  std::vector<std::string> functions;
  std::string workerPath;
  // Processes for each of them.
  unsigned workers = 1;
  double seconds = 60;
};

struct Options {
  std::string host = "127.0.0.1";
  std::uint16_t port = 8080;
  std::uint64_t maxBody = kLargestBody;
  // How long a client may take to send a request, and how long it may read nothing of a reply.
  double requestSeconds = 30;
  double replySeconds = 60;
  bool stopOnEof = false;
  // Whether signals end the server, and a calculation that still runs then is abandoned with the
  // process.
  bool ownsProcess = true;
  // For functions of which nothing is known.
  unsigned functionThreads = 0;
  // PEM files; empty for plain HTTP.
  std::string certificateFile;
  std::string keyFile;
  // PEM file; if set, a client must show a certificate that one of these signed.
  std::string clientCaFile;

  CommandOptions commands;
  // Each is a folder.
  std::string recordFolder, replayFolder;
  bool givesLastAnswer = false;
  UpstreamOptions upstream;
  std::vector<FaultRule> faults;
  std::uint64_t seed = 1;
  LogOptions log;

  bool usesTls() const { return !certificateFile.empty(); }
};

// What is wrong with the options has been written to the standard error.
struct CommandLine {
  // Absent if there is nothing to serve: help or version was asked for, or an option is wrong.
  std::optional<Options> options;
  int exitStatus = 0;
};

CommandLine parseCommandLine(int argc, char** argv);

}  // namespace hcy::server
