// SPDX-License-Identifier: Apache-2.0

#include "options.h"

#include <strings.h>
#include <sysexits.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string_view>
#include <system_error>

#include "settings/help_formatter.h"
#include "settings/tls_options.h"

namespace hcy::server {
namespace {

// A test runs each of them.
constexpr const char* kExamples = R"(Examples:
  hcy-local-server --port 0
  hcy-local-server --fault 'math/*=503@10%' --log
  hcy-local-server --function 'my/scale=python3 scale.py'
  hcy-local-server --upstream https://lab.example --record calls
  hcy-local-server --replay calls
)";

constexpr double kShortestTimeout = 0.001;
constexpr double kLongestTimeout = 86'400;

// A reason to refuse the function, or nothing.
std::string checkOfCommand(std::string& text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string::npos || sign == 0 || sign + 1 == text.size()) {
    return text + " is not NAME=COMMAND";
  }
  return text.front() == '/' ? "the name of a function does not begin with a slash" : "";
}

void addCommands(CLI::App& app, CommandOptions& commands) {
  const char* const group = "Your own functions";
  CLI::Option* const function =
      app.add_option("--function", commands.functions,
                     "Answer this function with a command, in lines of JSON; may be repeated")
          ->type_name("NAME=COMMAND")
          ->allow_extra_args(false)
          ->check(CLI::Validator(checkOfCommand, ""))
          ->group(group);
  app.add_option("--workers", commands.workers, "Processes of each command [1]")
      ->type_name("N")
      ->check(CLI::Range(1U, 64U).description(""))
      ->needs(function)
      ->group(group);
  app.add_option("--worker-path", commands.workerPath,
                 "Path for programs that answer the functions whose COMMAND is @")
      ->type_name("PATH")
      ->needs(function)
      ->group(group);
  app.add_option("--function-timeout", commands.seconds,
                 "Seconds that a command may take to answer [60]")
      ->take_last()
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout).description(""))
      ->needs(function)
      ->group(group);
}

// Reasons to refuse a value, or nothing.
std::string checkOfUrl(std::string& url) {
  const auto begins = [&url](std::string_view scheme) {
    return url.size() > scheme.size() &&
           ::strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
  };
  if (begins("http://") || begins("https://")) return "";
  return "the URL begins with neither http:// nor https://";
}

std::string checkOfFolder(const std::string& folder) {
  std::error_code unknown;
  if (std::filesystem::is_directory(folder, unknown)) return "";
  const bool isThere = std::filesystem::exists(folder, unknown);
  return folder + (isThere ? " is not a directory" : ": no such directory");
}

std::string checkOfNewFolder(const std::string& folder) {
  std::error_code unknown;
  return std::filesystem::exists(folder, unknown) ? checkOfFolder(folder) : "";
}

// The folder that is replayed may be missing if it is that of new recordings.
void requireReplayFolder(const Options& options) {
  namespace fs = std::filesystem;
  if (options.replayFolder.empty()) return;
  const bool isMade =
      !options.recordFolder.empty() &&
      fs::weakly_canonical(options.replayFolder) == fs::weakly_canonical(options.recordFolder);
  const std::string reason =
      isMade ? checkOfNewFolder(options.replayFolder) : checkOfFolder(options.replayFolder);
  if (!reason.empty()) throw CLI::ValidationError("--replay", reason);
}

void addRecording(CLI::App& app, Options& options) {
  const char* const group = "Recording and replaying";
  UpstreamOptions& upstream = options.upstream;
  CLI::Option* const url =
      app.add_option("--upstream", upstream.url, "Pass calls on to the server at this URL")
          ->type_name("URL")
          ->check(CLI::Validator(checkOfUrl, ""))
          ->group(group);
  app.add_option("--upstream-user-file", upstream.userFile,
                 "File whose first line is NAME:PASSWORD for that server")
      ->type_name("FILE")
      ->check(CLI::Validator(CLI::ExistingFile).description(""))
      ->needs(url)
      ->group(group);
  app.add_option("--record", options.recordFolder,
                 "Record each call that is passed on in this folder")
      ->type_name("FOLDER")
      ->check(CLI::Validator(checkOfNewFolder, ""))
      ->needs(url)
      ->group(group);
  CLI::Option* const replay =
      app.add_option("--replay", options.replayFolder, "Answer from the recordings in this folder")
          ->type_name("FOLDER")
          ->group(group);
  app.add_option_function<std::string>(
         "--order",
         [&options](const std::string& order) { options.givesLastAnswer = order == "last"; },
         "If a request has several answers, use them in turn (recorded) or always the "
         "last one (last) [recorded]")
      ->type_name("ORDER")
      ->check(CLI::IsMember({"recorded", "last"}).description(""))
      ->needs(replay)
      ->group(group);
  app.add_option("--upstream-timeout", upstream.seconds,
                 "Seconds that a call to that server may take [120]")
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout).description(""))
      ->needs(url)
      ->group(group);
  const tools::TlsOptionNames names{"upstream-", group};
  for (CLI::Option* const option : tools::addTlsFiles(app, upstream.tls, names)) {
    option->needs(url);
  }
  for (CLI::Option* const option : tools::addTlsVerification(app, upstream.tls, names)) {
    option->needs(url);
  }
}

void addFaults(CLI::App& app, Options& options) {
  const char* const group = "Failures on demand";
  CLI::Option* const fault = app.add_option_function<std::vector<std::string>>(
                                    "--fault",
                                    [&options](const std::vector<std::string>& rules) {
                                      for (const std::string& rule : rules) {
                                        options.faults.push_back(faultRuleFrom(rule));
                                      }
                                    },
                                    "Make these functions fail, or slow them down; may be repeated")
                                 ->type_name("PATTERN=WHAT")
                                 ->allow_extra_args(false)
                                 ->group(group);
  app.add_option("--seed", options.seed, "Seed of the random numbers [1]")
      ->type_name("N")
      ->needs(fault)
      ->group(group);
}

void addLog(CLI::App& app, LogOptions& log) {
  const char* const group = "Log";
  CLI::Option* const file =
      app.add_option("--log", log.file, "Write a line for each call [standard error]")
          ->type_name("[FILE]")
          ->expected(0, 1)
          ->default_str("-")
          ->group(group);
  app.add_option_function<std::string>(
         "--log-format", [&log](const std::string& format) { log.isJson = format == "json"; },
         "Format of a line: text or json [text]")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"text", "json"}).description(""))
      ->needs(file)
      ->group(group);
  CLI::Option* const values = app.add_flag("--log-values", log.showsValues,
                                           "Log inputs and outputs, too, in the notation of hcy")
                                  ->needs(file)
                                  ->group(group);
  app.add_option("--log-width", log.width, "Columns to cut each value to; 0 for no limit [60]")
      ->type_name("COLUMNS")
      ->needs(values)
      ->group(group);
}

void addListening(CLI::App& app, Options& options) {
  app.add_option("--host", options.host, "Address to listen on [127.0.0.1]")->type_name("ADDRESS");
  app.add_option("--port", options.port, "Port to listen on; 0 picks a free one [8080]")
      ->take_last()
      ->type_name("PORT");
  app.add_option("--max-body", options.maxBody,
                 "Longest request body, at most 2147483647 [2147483647]")
      ->type_name("BYTES")
      ->check(CLI::Range(std::uint64_t{0}, kLargestBody).description(""));
  app.add_option("--request-timeout", options.requestSeconds,
                 "Seconds that a client may take to send a request [30]")
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout).description(""));
  app.add_option("--reply-timeout", options.replySeconds,
                 "Seconds that a client may pause while it reads a reply [60]")
      ->type_name("SECONDS")
      ->check(CLI::Range(kShortestTimeout, kLongestTimeout).description(""));
  CLI::Option* const certificate =
      app.add_option("--cert", options.certificateFile,
                     "Serve https with this certificate (PEM); needs --key")
          ->type_name("FILE")
          ->check(CLI::Validator(CLI::ExistingFile).description(""));
  CLI::Option* const key =
      app.add_option("--key", options.keyFile, "The certificate's private key (PEM)")
          ->type_name("FILE")
          ->check(CLI::Validator(CLI::ExistingFile).description(""))
          ->needs(certificate);
  certificate->needs(key);
  app.add_option("--client-ca", options.clientCaFile,
                 "Require client certificates signed by this authority (PEM)")
      ->type_name("FILE")
      ->check(CLI::Validator(CLI::ExistingFile).description(""))
      ->needs(certificate);
  app.add_flag("--stop-on-eof", options.stopOnEof, "Stop when the standard input ends");
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  Options options;
  CLI::App app("A Halcyon compute server on this machine, for developing and testing clients.",
               "hcy-local-server");
  app.formatter(std::make_shared<tools::HelpFormatter>());
  app.footer(kExamples);
  app.set_version_flag("--version", "hcy-local-server " HCY_LOCAL_SERVER_VERSION);
  addListening(app, options);
  addCommands(app, options.commands);
  addRecording(app, options);
  addFaults(app, options);
  addLog(app, options.log);
  try {
    app.parse(argc, argv);
    requireReplayFolder(options);
  } catch (const CLI::Success& answer) {
    return {std::nullopt, app.exit(answer)};
  } catch (const BadFault& error) {
    std::cerr << "hcy-local-server: --fault: " << error.what()
              << "\nRun with --help for more information.\n";
    return {std::nullopt, EX_USAGE};
  } catch (const CLI::ParseError& error) {
    std::cerr << "hcy-local-server: " << error.what()
              << "\nRun with --help for more information.\n";
    return {std::nullopt, EX_USAGE};
  }
  return {options, 0};
}

}  // namespace hcy::server
