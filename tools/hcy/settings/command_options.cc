// SPDX-License-Identifier: Apache-2.0

#include "settings/command_options.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <tuple>
#include <type_traits>
#include <vector>

#include "settings/help_texts.h"
#include "settings/tls_options.h"

namespace hcy::tools {
namespace {

// More outputs than any function has, and few enough to allocate.
constexpr int kMostOutputs = 100000;

// Accepts "\\t" for a tab.
std::string delimiterProblem(std::string& text) {
  if (text == "\\t") text = "\t";
  constexpr std::string_view reserved = "\"#+-.\r\n";
  const bool isPlain = text.size() == 1 && reserved.find(text[0]) == std::string_view::npos &&
                       (text[0] == '\t' || (text[0] >= ' ' && text[0] <= '~')) &&
                       !std::isalnum(static_cast<unsigned char>(text[0]));
  return isPlain ? ""
                 : "must be one character (not a letter, a digit, or one of \" # + - .), but is " +
                       text;
}

template <class Number>
std::string decimal(Number number) {
  std::array<char, 32> text{};
  char* const end = text.data() + text.size();
  if constexpr (std::is_floating_point_v<Number>) {
    return {text.data(), std::to_chars(text.data(), end, number, std::chars_format::fixed).ptr};
  } else {
    return {text.data(), std::to_chars(text.data(), end, number).ptr};
  }
}

// A check that an option is a number from `low` to `high`.
template <class Number>
CLI::Validator between(Number low, Number high) {
  const auto problem = [low, high](const std::string& text) -> std::string {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    const bool isNumber = read.ec == std::errc() && read.ptr == end;
    if (isNumber && number >= low && number <= high) return "";
    return "must be between " + decimal(low) + " and " + decimal(high) + ", but is " + text;
  };
  return {problem, "", ""};
}

std::string secondsProblem(const std::string& text) {
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, seconds);
  const bool isNumber = read.ec == std::errc() && read.ptr == end;
  const bool isInRange = seconds >= 0 && seconds <= std::numeric_limits<std::uint32_t>::max();
  return isNumber && isInRange ? "" : "must be between 0 and 4294967295 seconds, but is " + text;
}

// Replaces "64k" by "65536".
std::string sizeProblem(std::string& text) {
  constexpr std::string_view suffixes = "kmg";
  constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
  std::uint64_t size = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, size);
  const std::string_view suffix(read.ptr, static_cast<std::size_t>(end - read.ptr));
  const std::size_t power =
      suffix.size() == 1
          ? suffixes.find(static_cast<char>(std::tolower(static_cast<unsigned char>(suffix[0]))))
          : std::string_view::npos;
  const bool isSize = read.ec == std::errc() && (suffix.empty() || power != std::string_view::npos);
  const std::size_t shift = suffix.empty() ? 0 : 10 * (power + 1);
  if (!isSize || size > largest >> shift) {
    return "must be between 0 and 4294967295 bytes, such as 500000, 64k, 10M or 1G, but is " + text;
  }
  text = decimal(size << shift);
  return "";
}

template <class Validator>
CLI::Validator unnamed(Validator validator) {
  return validator.description("");
}

void addSettings(CLI::App& app, Settings& settings) {
  const char* const group = "Connection";
  app.add_option("-m,--timeout,--max-time", settings.timeout,
                 "Maximum time for one call; 0 for no limit [120]")
      ->type_name("SECONDS")
      ->check(unnamed(CLI::Validator(secondsProblem, "", "")))
      ->group(group);
  app.add_option("--max-reply", settings.largestReply,
                 "Largest reply to accept; k, M or G after the number for KiB, MiB or GiB [64M]")
      ->type_name("BYTES")
      ->transform(unnamed(CLI::Validator(sizeProblem, "", "")))
      ->group(group);
  const TlsOptionNames names{"", group};
  addTlsFiles(app, settings, names);
  app.add_flag("--ask-key-pass", settings.asksPassPhrase,
               "Ask for the pass phrase of the key on the terminal")
      ->needs(app.get_option("--key"))
      ->excludes(app.get_option("--key-pass-file"))
      ->group(group);
  addTlsVerification(app, settings, names);
  app.add_flag_callback(
         "-k,--insecure", [&settings] { settings.verifiesHost = settings.verifiesPeer = false; },
         "Accept any certificate: both of these")
      ->group(group);
}

void addInputs(CLI::App& command, Options& options) {
  command.allow_extras();  // the inputs
  command.add_option("-n,--nargout", options.nargout, "Number of outputs [1]")
      ->type_name("N")
      ->check(between(0, kMostOutputs));
  command
      .add_option_function<std::string>(
          "--delimiter",
          [&options](const std::string& text) {
            options.argumentSettings.delimiter = options.output.delimiter = text[0];
          },
          "Character between the fields of CSV, in and out [,]")
      ->type_name("C")
      ->transform(unnamed(CLI::Validator(delimiterProblem, "", "")));
}

CLI::App* addCalling(CLI::App& app, const std::string& name, const std::string& help,
                     Options& options) {
  CLI::App* const command = app.add_subcommand(name, help);
  command
      ->add_option("URL", options.url, "The function: a URL, @SERVER/PATH, or a path on HCY_SERVER")
      ->required()
      ->type_name("");
  addInputs(*command, options);
  return command;
}

void addOutput(CLI::App& app, OutputSettings& output) {
  const char* const group = "Output";
  const std::vector<std::tuple<const char*, Form, const char*>> forms = {
      {"--json", Form::kJson, "Print each output as one line of JSON, which can be used as an ARG"},
      {"-r,--raw", Form::kRaw, "Print text and single numbers without quotes or class"},
      {"--csv", Form::kCsv, "Print tables as comma-separated values"},
      {"--tsv", Form::kTsv, "Print tables as tab-separated values"}};
  std::vector<CLI::Option*> flags;
  for (const auto& [name, form, help] : forms) {
    CLI::Option* const flag = app.add_flag_callback(
        name, [&output, form = form] { output.form = form; }, help);
    flag->group(group);
    for (CLI::Option* const other : flags) flag->excludes(other);
    flags.push_back(flag);
  }
  app.add_option(
         "-o,--output", output.files,
         "Write to a file, in the format of its extension (.json .csv .tsv .npy .txt), or to the "
         "standard output (-); repeat the option to write each output to its own file")
      ->type_name("FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  app.add_option("--width", output.width,
                 "Cut lines to this width; 0 for no limit [width of the terminal]")
      ->type_name("COLUMNS")
      ->group(group);
  app.add_flag_callback(
         "--full", [&output] { output.isFolded = false; },
         "Show all rows and elements on a terminal")
      ->group(group);
}

// What shows the details of a single call.
std::vector<CLI::Option*> addDiagnostics(CLI::App& app, Options& options) {
  const char* const group = "Diagnostics";
  std::vector<CLI::Option*> all = {
      app.add_flag("-v,--verbose", options.isVerbose,
                   "Show request, status, sizes and times on standard error"),
      app.add_option("--save-request", options.requestFile, "Save the body of the request")
          ->type_name("FILE"),
      app.add_option("--save-reply", options.replyFile, "Save the body of the reply")
          ->type_name("FILE")};
  for (CLI::Option* const option : all) option->group(group);
  return all;
}

void addEach(CLI::App& app, Options& options, const std::vector<CLI::Option*>& diagnostics) {
  const char* const group = "Many calls";
  app.add_option("--retry", options.retries,
                 "Call again up to N times if the connection or the server fails [0]")
      ->type_name("N")
      ->check(between(0U, 1000U))
      ->group(group);
  CLI::Option* const each =
      app.add_option_function<std::vector<std::string>>(
             "--each",
             [&options](const std::vector<std::string>& file) {
               if (file.size() > 1) {
                 throw CLI::ValidationError(
                     "--each", "takes one file, but has " + file[0] + " and " + file[1] +
                                   "; put arguments for all calls before --each");
               }
               const bool isNamed = !file.empty() && !file.front().empty() && file.front() != "{}";
               options.each = isNamed ? file.front() : "-";
             },
             "Make a call for each line of a file or of standard input: a JSON list of arguments")
          ->type_name("[FILE]")
          ->expected(0, 1)
          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
          ->group(group);
  for (CLI::Option* const option : diagnostics) option->excludes(each);
  app.add_option("-j,--jobs", options.jobs, "Calls to make at once [1]")
      ->type_name("N")
      ->check(between(1U, 1024U))
      ->needs(each)
      ->group(group);
}

void addCall(CLI::App& app, Options& options) {
  CLI::App* const call = addCalling(app, "call", "Call a function and show its outputs", options);
  addOutput(*call, options.output);
  addEach(*call, options, addDiagnostics(*call, options));
  addSettings(*call, options.settings);
  call->footer(std::string(kArgumentHelp) + kCallExamples);
}

void addBenchSettings(CLI::App& app, Options& options) {
  const auto seconds = unnamed(CLI::Validator(secondsProblem, "", ""));
  app.add_option("--duration", options.duration, "Start no more calls after this time")
      ->type_name("SECONDS")
      ->check(seconds);
  app.add_option("--warmup", options.warmUps, "Calls to make before measuring [0]")
      ->type_name("N")
      ->check(between<std::uint64_t>(0, 1000000000));
  app.add_option(
         "--rate", options.rate,
         "Calls to start per second, 0.001 to 1000000; the latency of a call is measured from the "
         "time at which it was due")
      ->type_name("R")
      ->check(between(1e-3, 1e6));
  app.add_option("--against", options.against,
                 "Another URL to compare with; calls alternate between the two")
      ->type_name("URL");
  app.add_flag("--histogram", options.showsHistogram, "Show the distribution of the latencies");
  app.add_flag_callback(
      "--json", [&options] { options.output.form = Form::kJson; }, "Print the summary as JSON");
}

void addBench(CLI::App& app, Options& options) {
  CLI::App* const bench =
      addCalling(app, "bench", "Call a function repeatedly and measure latency and rate", options);
  bench
      ->add_option("--calls", options.calls,
                   "Number of calls to each URL [1000, or as many as fit into --duration]")
      ->type_name("N")
      ->check(between<std::uint64_t>(1, 1000000000));
  bench
      ->add_option("--threads", options.threads,
                   "Threads that make calls, each on its own connection [1]")
      ->type_name("T")
      ->check(between(1U, 1024U));
  addBenchSettings(*bench, options);
  addSettings(*bench, options.settings);
  bench->footer(std::string(kArgumentHelp) + kBenchExamples);
}

void addList(CLI::App& app, Options& options) {
  CLI::App* const list = app.add_subcommand("list", "List the functions of a server");
  list->add_option("SERVER", options.url, "A URL or @SERVER [the default server]")->type_name("");
  CLI::Option* const json = list->add_flag_callback(
      "--json", [&options] { options.output.form = Form::kJson; },
      "Print the index as the server sends it");
  list->add_flag_callback(
          "-r,--raw", [&options] { options.output.form = Form::kRaw; }, "Print the names only")
      ->excludes(json);
  addSettings(*list, options.settings);
  list->footer(kListExamples + 1);
}

void addEncode(CLI::App& app, Options& options) {
  CLI::App* const encode = app.add_subcommand("encode", "Write the body of a request");
  addInputs(*encode, options);
  encode->add_option("-o,--output", options.output.files, "Write to a file; - for standard output")
      ->type_name("FILE")
      ->expected(1);
  encode->footer(std::string(kArgumentHelp) + kEncodeExamples);
}

void addShow(CLI::App& app, Options& options) {
  CLI::App* const show = app.add_subcommand("show", "Show the body of a request or reply");
  show->add_option("FILE", options.file, "The body; - for standard input")
      ->required()
      ->type_name("");
  CLI::Option* const request = show->add_flag_callback(
      "--request", [&options] { options.body = Body::kRequest; }, "Read the file as a request");
  show->add_flag_callback(
          "--reply", [&options] { options.body = Body::kReply; }, "Read the file as a reply")
      ->excludes(request);
  show->add_flag("--schema", options.showsSchema,
                 "Show the fields with their names in the schema, not as arrays");
  show->footer(kShowExamples + 1);
}

}  // namespace

void addCommands(CLI::App& app, Options& options) {
  addCall(app, options);
  addBench(app, options);
  addList(app, options);
  addEncode(app, options);
  addShow(app, options);
  // Only for the help: main() hands the command over before the options are read.
  app.add_subcommand("serve", "Serve functions on this machine: hcy-local-server(1)");
}

}  // namespace hcy::tools
