// SPDX-License-Identifier: Apache-2.0

#include "options.h"

#include <sysexits.h>

#include <CLI/CLI.hpp>
#include <iostream>

namespace hcy::server {
namespace {

constexpr double kShortestTimeout = 0.001;
constexpr double kLongestTimeout = 86'400;

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  Options options;
  CLI::App app("A Halcyon compute server on this machine, to develop and test clients with.",
               "hcy-local-server");
  app.set_version_flag("--version", "hcy-local-server " HCY_LOCAL_SERVER_VERSION);
  app.add_option("--host", options.host, "Address to listen on")->capture_default_str();
  app.add_option("--port", options.port, "Port to listen on; 0 picks a free one")
      ->take_last()
      ->capture_default_str();
  app.add_option("--max-body", options.maxBody, "Longest request body, in bytes")
      ->check(CLI::Range(std::uint64_t{0}, kLargestBody))
      ->capture_default_str();
  app.add_option("--request-timeout", options.requestSeconds,
                 "Seconds that a client may take to send a request")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout))
      ->capture_default_str();
  app.add_option("--reply-timeout", options.replySeconds,
                 "Seconds that a client may read nothing of a reply")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout))
      ->capture_default_str();
  CLI::Option* certificate =
      app.add_option("--cert", options.certificateFile, "Serve https with this certificate (PEM)")
          ->check(CLI::ExistingFile);
  CLI::Option* key = app.add_option("--key", options.keyFile, "The certificate's private key (PEM)")
                         ->check(CLI::ExistingFile)
                         ->needs(certificate);
  certificate->needs(key);
  app.add_option("--client-ca", options.clientCaFile,
                 "Demand client certificates signed by this authority (PEM)")
      ->check(CLI::ExistingFile)
      ->needs(certificate);
  app.add_flag("--stop-on-eof", options.stopOnEof, "Stop when the standard input ends");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& answer) {
    return {std::nullopt, app.exit(answer)};
  } catch (const CLI::ParseError& error) {
    std::cerr << "hcy-local-server: " << error.what()
              << "\nRun with --help for more information.\n";
    return {std::nullopt, EX_USAGE};
  }
  return {options, 0};
}

}  // namespace hcy::server
