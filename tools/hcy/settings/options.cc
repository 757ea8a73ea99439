// SPDX-License-Identifier: Apache-2.0

#include "settings/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <string_view>
#include <tuple>

#include "calls/exit_status.h"
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

// Takes "\\t" for a tab.
std::string delimiterProblem(std::string& text) {
  if (text == "\\t") text = "\t";
  constexpr std::string_view reserved = "\"#+-.\r\n";
  const bool isPlain = text.size() == 1 && reserved.find(text[0]) == std::string_view::npos &&
                       (text[0] == '\t' || (text[0] >= ' ' && text[0] <= '~')) &&
                       !std::isalnum(static_cast<unsigned char>(text[0]));
  return isPlain ? "" : "not a character that can separate fields: " + text;
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
  app.add_option("--timeout", settings.timeout,
                 "Seconds that one call may take; 0 for no limit [120]")
      ->type_name("SECONDS")
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
  addFile("--ca", settings.authorityFile,
          "Authorities that the server's certificate is checked against (PEM)");
  addFile("--crl", settings.revocationListFile, "Lists of revoked certificates (PEM)");
  addFile("--cert", settings.certificateFile, "Certificate to show to the server (PEM)");
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
}

CLI::App* addCalling(CLI::App& app, const std::string& name, const std::string& help,
                     Options& options) {
  CLI::App* const command = app.add_subcommand(name, help);
  command->add_option("URL", options.url, "The function")->required()->type_name("");
  command->allow_extras();  // the inputs
  command->add_option("-n,--nargout", options.nargout, "Number of outputs [1]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(0, kMostOutputs)));
  command
      ->add_option_function<std::string>(
          "--delimiter",
          [&options](const std::string& text) { options.argumentSettings.delimiter = text[0]; },
          "Character between the fields of csv [,]")
      ->type_name("C")
      ->transform(unnamed(CLI::Validator(delimiterProblem, "", "")));
  command->footer(kArgumentHelp);
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

void addCall(CLI::App& app, Options& options) {
  CLI::App* const call = addCalling(app, "call", "Call a function and show its outputs", options);
  addOutput(*call, options.output);
  addSettings(*call, options.settings);
}

void addBench(CLI::App& app, Options& options) {
  CLI::App* const bench =
      addCalling(app, "bench", "Call a function over and over, and measure it", options);
  bench->add_option("--calls", options.calls, "Number of calls in all [1000]")
      ->type_name("N")
      ->check(unnamed(CLI::Range(std::uint64_t{1}, std::uint64_t{1000000000})));
  bench
      ->add_option("--threads", options.threads,
                   "Threads that call, each on its own connection [1]")
      ->type_name("T")
      ->check(unnamed(CLI::Range(1U, 1024U)));
  addSettings(*bench, options.settings);
}

void addShow(CLI::App& app, Options& options) {
  CLI::App* const show = app.add_subcommand("show", "Show the body of a request or reply as JSON");
  show->add_option("FILE", options.file, "The body; - for the standard input")
      ->required()
      ->type_name("");
  CLI::Option* const request = show->add_flag_callback(
      "--request", [&options] { options.body = Body::kRequest; }, "Take it for a request");
  show->add_flag_callback(
          "--reply", [&options] { options.body = Body::kReply; }, "Take it for a reply")
      ->excludes(request);
}

bool isCommand(const CLI::App& app, std::string_view word) {
  const auto hasName = [word](const CLI::App* command) { return command->get_name() == word; };
  return !app.get_subcommands(hasName).empty();
}

CommandLine refused(std::string_view problem) {
  std::cerr << "hcy: " << printable(problem) << "\nhcy --help lists the options.\n";
  return {std::nullopt, kUsage};
}

// An argument begins with a dash only as a negative number or as the standard input.
void requireNoOptions(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9')) {
      throw CLI::ExtrasError({argument});
    }
  }
}

// Two dashes end the options elsewhere; no argument can be mistaken for one here.
std::vector<std::string> wordsOf(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  std::erase(words, "--");
  std::reverse(words.begin(), words.end());  // as the parser takes them
  return words;
}

Command commandNamed(const std::string& name) {
  if (name == "call") return Command::kCall;
  return name == "bench" ? Command::kBench : Command::kShow;
}

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
  Options options;
  CLI::App app("Call functions on a Halcyon compute server.", "hcy");
  app.set_version_flag("--version", "hcy " HCY_VERSION, "Print the version and exit");
  app.formatter(std::make_shared<Formatter>());
  app.require_subcommand(1);
  addCall(app, options);
  addBench(app, options);
  addShow(app, options);
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (!first.empty() && first[0] != '-' && !isCommand(app, first)) {
    return refused("there is no command " + std::string(first));
  }
  try {
    app.parse(wordsOf(argc, argv));
    const CLI::App* const command = app.get_subcommands().front();
    options.command = commandNamed(command->get_name());
    options.arguments = command->remaining();
    requireNoOptions(options.arguments);
  } catch (const CLI::ParseError& outcome) {
    if (outcome.get_exit_code() == 0) return {std::nullopt, app.exit(outcome)};
    return refused(outcome.what());
  }
  return {options, kSuccess};
}

}  // namespace hcy::tools
