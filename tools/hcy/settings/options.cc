// SPDX-License-Identifier: Apache-2.0

#include "settings/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <iostream>
#include <limits>
#include <memory>
#include <string_view>
#include <system_error>
#include <tuple>

#include "calls/exit_status.h"
#include "calls/failure.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

// More outputs than any function has, and few enough to make room for.
constexpr int kMostOutputs = 100000;

constexpr const char* kArgumentHelp = R"(An ARG is one of
  5  true  '"text"'  '{"a":1}'                         JSON
  [1,2]  [[1],[2]]  [[1,2],[3,4]]                      a row, a column, rows
  int16:[1,2]  float32:0.5                             JSON with a class before it
  text:hello  text:@notes.txt  text:-                  text
  @data.json  @table.csv  @table.tsv  @a.npy           a file
  -  csv:-  tsv:-                                      the standard input
  '@table.csv[x,y]'  '@table.csv[x;y]'                 columns: a matrix; one by one
hcy(1) tells more.
)";

constexpr const char* kGeneralFooter = R"(hcy help COMMAND tells the options of a command.

Examples:
  hcy call http://127.0.0.1:8080/math/plus 2 3
  HCY_SERVER=http://127.0.0.1:8080 hcy call math/plus 2 3
)";

constexpr const char* kCallExamples = R"(
Examples:
  hcy call http://127.0.0.1:8080/linalg/solve '[[2,0],[1,4]]' '[[1],[2]]'
  hcy call http://127.0.0.1:8080/stats/describe @examples/data/norris.csv --csv
  hcy call http://127.0.0.1:8080/text/upper text:hello --raw
)";

constexpr const char* kBenchExamples = R"(
Examples:
  hcy bench http://127.0.0.1:8080/echo '[1,2,3]' --calls 1000 --threads 2
)";

constexpr const char* kListExamples = R"(
Examples:
  hcy list http://127.0.0.1:8080
  HCY_SERVER=http://127.0.0.1:8080 hcy list --raw
)";

constexpr const char* kEncodeExamples = R"(
Examples:
  hcy encode 2 3 | hcy show -
  hcy encode 2 3 | curl -s --data-binary @- http://127.0.0.1:8080/math/plus | hcy show -
)";

constexpr const char* kShowExamples = R"(
Examples:
  hcy show bodies/char.request.bin
  hcy show --schema - < bodies/char.reply.bin
)";

// Takes "\\t" for a tab.
std::string delimiterProblem(std::string& text) {
  if (text == "\\t") text = "\t";
  constexpr std::string_view reserved = "\"#+-.\r\n";
  const bool isPlain = text.size() == 1 && reserved.find(text[0]) == std::string_view::npos &&
                       (text[0] == '\t' || (text[0] >= ' ' && text[0] <= '~')) &&
                       !std::isalnum(static_cast<unsigned char>(text[0]));
  return isPlain ? "" : "not a character that can separate fields: " + text;
}

std::string secondsProblem(const std::string& text) {
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, seconds);
  const bool isNumber = read.ec == std::errc() && read.ptr == end;
  const bool isInRange = seconds >= 0 && seconds <= std::numeric_limits<std::uint32_t>::max();
  return isNumber && isInRange ? "" : "not a number of seconds: " + text;
}

// Says of each option what a user needs to know, and not how it is checked. Adds the inputs of a
// function, which are no option of CLI11: it would split a list in brackets, and its versions
// differ in what they give to an optional positional.
class Formatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override {
    std::string usage = CLI::Formatter::make_usage(app, name);
    if (takesInputs(*app)) usage.insert(usage.find_last_not_of('\n') + 1, " [ARG]...");
    return usage;
  }
  std::string make_positionals(const CLI::App* app) const override {
    std::string lines = CLI::Formatter::make_positionals(app);
    if (!takesInputs(*app)) return lines;
    std::string name = "  ARG";
    name.resize(std::max(get_column_width(), name.size() + 1), ' ');
    lines.insert(lines.find_last_not_of('\n') + 1, "\n" + name + "Its inputs");
    return lines;
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    return type.empty() ? "" : " " + type;
  }
  std::string make_option_usage(const CLI::Option* option) const override {
    return option->get_name(true);
  }

 private:
  static bool takesInputs(const CLI::App& app) { return app.get_allow_extras(); }
};

template <class Validator>
CLI::Validator unnamed(Validator validator) {
  return validator.description("");
}

void addSettings(CLI::App& app, Settings& settings) {
  const char* const group = "Connection";
  app.add_option("-m,--timeout,--max-time", settings.timeout,
                 "Seconds that one call may take; 0 for no limit [120]")
      ->type_name("SECONDS")
      ->check(unnamed(CLI::Validator(secondsProblem, "", "")))
      ->group(group);
  app.add_option("--max-reply", settings.largestReply, "Largest reply that is accepted [67108864]")
      ->type_name("BYTES")
      ->group(group);
  const auto addFile = [&](const char* name, std::string& file, const char* help) {
    return app.add_option(name, file, help)
        ->type_name("FILE")
        ->check(unnamed(CLI::ExistingFile))
        ->group(group);
  };
  addFile("--ca,--cacert", settings.authorityFile,
          "Authorities that the server's certificate is checked against (PEM)");
  addFile("--crl,--crlfile", settings.revocationListFile, "Lists of revoked certificates (PEM)");
  addFile("-E,--cert", settings.certificateFile, "Certificate to show to the server (PEM)");
  CLI::Option* const key = addFile("--key", settings.keyFile, "Its private key (PEM)");
  CLI::Option* const fromFile = addFile("--key-pass-file", settings.passPhraseFile,
                                        "File whose first line is the pass phrase of the key")
                                    ->needs(key);
  app.add_flag("--ask-key-pass", settings.asksPassPhrase,
               "Ask for the pass phrase of the key on the terminal")
      ->needs(key)
      ->excludes(fromFile)
      ->group(group);
  app.add_flag_callback(
         "--no-verify-host", [&settings] { settings.verifiesHost = false; },
         "Take a certificate that names another host")
      ->group(group);
  app.add_flag_callback(
         "--no-verify-peer", [&settings] { settings.verifiesPeer = false; },
         "Take a certificate that nobody trusted has signed")
      ->group(group);
  app.add_flag_callback(
         "-k,--insecure", [&settings] { settings.verifiesHost = settings.verifiesPeer = false; },
         "Take any certificate: both of these")
      ->group(group);
}

void addInputs(CLI::App& command, Options& options) {
  command.allow_extras();  // the inputs
  command.add_option("-n,--nargout", options.nargout, "Number of outputs [1]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(0, kMostOutputs)));
  command
      .add_option_function<std::string>(
          "--delimiter",
          [&options](const std::string& text) { options.argumentSettings.delimiter = text[0]; },
          "Character between the fields of csv [,]")
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
      {"--json", Form::kJson, "Show each output on a line, as JSON that can be an ARG"},
      {"-r,--raw", Form::kRaw, "Show text and single numbers without quotes and class"},
      {"--csv", Form::kCsv, "Show tables as comma-separated values"},
      {"--tsv", Form::kTsv, "Show tables as values separated by tabs"}};
  std::vector<CLI::Option*> flags;
  for (const auto& [name, form, help] : forms) {
    CLI::Option* const flag = app.add_flag_callback(
        name, [&output, form = form] { output.form = form; }, help);
    flag->group(group);
    for (CLI::Option* const other : flags) flag->excludes(other);
    flags.push_back(flag);
  }
  app.add_option("-o,--output", output.files,
                 "Write to a file, by its ending: .json .csv .tsv .npy .txt; repeated, a file for "
                 "each output")
      ->type_name("FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(group);
  app.add_option("--width", output.width,
                 "Columns to cut outputs to; 0 for no limit [that of the terminal]")
      ->type_name("COLUMNS")
      ->group(group);
  app.add_flag_callback(
         "--full", [&output] { output.isFolded = false; },
         "Show all rows and elements on a terminal")
      ->group(group);
}

// What shows a single call from near.
std::vector<CLI::Option*> addSeeing(CLI::App& app, Options& options) {
  const char* const group = "Seeing";
  const std::vector<CLI::Option*> all = {
      app.add_flag("-v,--verbose", options.isVerbose,
                   "Show request, status, sizes and times on standard error"),
      app.add_option("--save-request", options.requestFile, "Keep the body of the request")
          ->type_name("FILE"),
      app.add_option("--save-reply", options.replyFile, "Keep the body of the reply")
          ->type_name("FILE")};
  for (CLI::Option* const option : all) option->group(group);
  return all;
}

void addEach(CLI::App& app, Options& options, const std::vector<CLI::Option*>& seeing) {
  const char* const group = "Many calls";
  CLI::Option* const retry = app.add_option("--retry", options.retries,
                                            "Times to call again after a failure on the way [0]")
                                 ->type_name("N")
                                 ->check(unnamed(CLI::Range(0U, 1000U)))
                                 ->group(group);
  CLI::Option* const each =
      app.add_option_function<std::vector<std::string>>(
             "--each",
             [&options](const std::vector<std::string>& file) {
               options.each = file.empty() || file.front().empty() ? "-" : file.front();
             },
             "Call for each line of a file or the standard input, a JSON list of arguments")
          ->type_name("[FILE]")
          ->expected(0, 1)
          ->group(group);
  for (CLI::Option* const option : seeing) option->excludes(each)->excludes(retry);
  app.add_option("-j,--jobs", options.jobs, "Calls that are under way at once [1]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(1U, 1024U)))
      ->needs(each)
      ->group(group);
}

void addCall(CLI::App& app, Options& options) {
  CLI::App* const call = addCalling(app, "call", "Call a function and show its outputs", options);
  addOutput(*call, options.output);
  addEach(*call, options, addSeeing(*call, options));
  addSettings(*call, options.settings);
  call->footer(std::string(kArgumentHelp) + kCallExamples);
}

void addBenchSettings(CLI::App& app, Options& options) {
  const auto seconds = unnamed(CLI::Validator(secondsProblem, "", ""));
  app.add_option("--duration", options.duration, "Time after which no more calls begin")
      ->type_name("SECONDS")
      ->check(seconds);
  app.add_option("--warmup", options.warmUps, "Calls before those that are measured [0]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(std::uint64_t{0}, std::uint64_t{1000000000})));
  app.add_option("--rate", options.rate,
                 "Calls per second that are to begin; latencies count from then on")
      ->type_name("R")
      ->check(unnamed(CLI::Range(1e-3, 1e6)));
  app.add_option("--against", options.against, "Another URL to compare with, called in turns")
      ->type_name("URL");
  app.add_flag("--histogram", options.showsHistogram, "Show how the latencies are spread");
  app.add_flag_callback(
      "--json", [&options] { options.output.form = Form::kJson; }, "Show the summary as JSON");
}

void addBench(CLI::App& app, Options& options) {
  CLI::App* const bench =
      addCalling(app, "bench", "Call a function over and over, and measure it", options);
  bench
      ->add_option("--calls", options.calls,
                   "Number of calls in all [1000, or as many as go into --duration]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(std::uint64_t{1}, std::uint64_t{1000000000})));
  bench
      ->add_option("--threads", options.threads,
                   "Threads that call, each on its own connection [1]")
      ->type_name("T")
      ->check(unnamed(CLI::Range(1U, 1024U)));
  addBenchSettings(*bench, options);
  addSettings(*bench, options.settings);
  bench->footer(std::string(kArgumentHelp) + kBenchExamples);
}

void addList(CLI::App& app, Options& options) {
  CLI::App* const list = app.add_subcommand("list", "List the functions of a server");
  list->add_option("SERVER", options.url, "A URL or @SERVER [that of HCY_SERVER]")->type_name("");
  CLI::Option* const json = list->add_flag_callback(
      "--json", [&options] { options.output.form = Form::kJson; }, "Show the server's own index");
  list->add_flag_callback(
          "-r,--raw", [&options] { options.output.form = Form::kRaw; }, "Show the names alone")
      ->excludes(json);
  addSettings(*list, options.settings);
  list->footer(kListExamples + 1);
}

void addEncode(CLI::App& app, Options& options) {
  CLI::App* const encode = app.add_subcommand("encode", "Write the body of a request");
  addInputs(*encode, options);
  encode->add_option("-o,--output", options.output.files, "Write to a file")
      ->type_name("FILE")
      ->expected(1);
  encode->footer(std::string(kArgumentHelp) + kEncodeExamples);
}

void addShow(CLI::App& app, Options& options) {
  CLI::App* const show = app.add_subcommand("show", "Show the body of a request or reply");
  show->add_option("FILE", options.file, "The body; - for the standard input")
      ->required()
      ->type_name("");
  CLI::Option* const request = show->add_flag_callback(
      "--request", [&options] { options.body = Body::kRequest; }, "Take it for a request");
  show->add_flag_callback(
          "--reply", [&options] { options.body = Body::kReply; }, "Take it for a reply")
      ->excludes(request);
  show->add_flag("--schema", options.showsSchema,
                 "Show it field by field, as the schema names them, not as arrays");
  show->footer(kShowExamples + 1);
}

bool isCommand(const CLI::App& app, std::string_view word) {
  const auto hasName = [word](const CLI::App* command) { return command->get_name() == word; };
  return !app.get_subcommands(hasName).empty();
}

std::string suggestedCommand(const CLI::App& app, std::string_view word) {
  std::vector<std::string> names = {"help"};
  for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return suggestionFor(word, {names.begin(), names.end()});
}

CommandLine refused(const std::string& problem, bool isJson) {
  const Failure failure{"usage", printable(problem), kUsage};
  std::cerr << failureAs(isJson, failure);
  if (!isJson) std::cerr << "hcy --help lists the options.\n";
  return {std::nullopt, kUsage};
}

// An argument begins with a dash only as a negative number or as the standard input.
bool isOption(std::string_view word) {
  const bool isInput = word.starts_with("-[") && word.ends_with(']');
  return word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9') && !isInput;
}

void requireNoOptions(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (isOption(argument)) throw CLI::ExtrasError({argument});
  }
}

// For the first word that is taken for an option which the command does not have.
std::string suggestedOption(const CLI::App& app, const std::vector<std::string>& words) {
  std::vector<std::string> names;
  const auto commands = app.get_subcommands();
  for (const CLI::Option* const option :
       (commands.empty() ? &app : commands.front())->get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  const std::vector<std::string_view> known(names.begin(), names.end());
  for (const std::string& word : words) {
    const std::string name = word.substr(0, word.find('='));
    if (!name.starts_with("--") || std::find(names.begin(), names.end(), name) != names.end()) {
      continue;
    }
    return suggestionFor(name, known);
  }
  return {};
}

// Two dashes end the options elsewhere; no argument can be mistaken for one here. `help call` is
// `call --help`.
std::vector<std::string> wordsOf(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  std::erase(words, "--");
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    words.resize(std::min<std::size_t>(words.size(), 1));
    words.push_back("--help");
  }
  return words;
}

Command commandNamed(const std::string& name) {
  if (name == "call") return Command::kCall;
  if (name == "list") return Command::kList;
  if (name == "encode") return Command::kEncode;
  return name == "bench" ? Command::kBench : Command::kShow;
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  Options options;
  CLI::App app("Call functions on a Halcyon compute server.", "hcy");
  app.set_version_flag("--version", "hcy " HCY_VERSION, "Print the version and exit");
  app.formatter(std::make_shared<Formatter>());
  app.require_subcommand(1);
  app.footer(kGeneralFooter);
  addCall(app, options);
  addBench(app, options);
  addList(app, options);
  addEncode(app, options);
  addShow(app, options);
  // Only for the help: main() hands the command over before the options are read.
  app.add_subcommand("serve", "Serve functions on this machine: hcy-local-server(1)");
  const std::vector<std::string> words = wordsOf(argc, argv);
  const bool isJson = std::find(words.begin(), words.end(), "--json") != words.end();
  if (!words.empty() && words.front()[0] != '-' && !isCommand(app, words.front())) {
    return refused("there is no command " + words.front() + suggestedCommand(app, words.front()),
                   isJson);
  }
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));  // as the parser takes them
    const CLI::App* const command = app.get_subcommands().front();
    options.command = commandNamed(command->get_name());
    options.arguments = command->remaining();
    requireNoOptions(options.arguments);
  } catch (const CLI::ExtrasError& problem) {
    return refused(problem.what() + suggestedOption(app, words), isJson);
  } catch (const CLI::ParseError& outcome) {
    if (outcome.get_exit_code() == 0) return {std::nullopt, app.exit(outcome)};
    return refused(outcome.what(), isJson);
  }
  return {options, kSuccess};
}

}  // namespace hcy::tools
