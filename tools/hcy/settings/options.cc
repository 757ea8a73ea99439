// SPDX-License-Identifier: Apache-2.0

#include "settings/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <string_view>

#include "results/exit_status.h"
#include "results/failure.h"
#include "settings/command_options.h"
#include "settings/help_formatter.h"
#include "settings/help_texts.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

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

// `command` is the command whose help is suggested, or empty.
CommandLine refused(const std::string& problem, bool isJson, const std::string& command) {
  const Failure failure{"usage", printable(problem), kUsage};
  std::cerr << failureAs(isJson, failure);
  if (!isJson) {
    const std::string help = command.empty() ? "hcy help" : "hcy help " + command;
    std::cerr << "Run \"" << help << "\" to list the options.\n";
  }
  return {std::nullopt, kUsage};
}

// An argument begins with a dash only as a negative number or as the standard input.
bool isOption(std::string_view word) {
  return word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9') && word[1] != '.';
}

void requireNoOptions(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (isOption(argument)) throw CLI::ExtrasError({argument});
  }
}

// For the first option that the command does not have.
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
    const auto isLonger = [&name](const std::string& option) { return option.starts_with(name); };
    if (std::count_if(names.begin(), names.end(), isLonger) == 1) {
      return "; did you mean " + *std::find_if(names.begin(), names.end(), isLonger) + "?";
    }
    return suggestionFor(name, known);
  }
  return {};
}

// The words that a command does not take, in the order in which they were given.
std::string unexpectedWords(const CLI::App& app, const CLI::ExtrasError& problem) {
  const auto commands = app.get_subcommands();
  if (!commands.empty() && !commands.front()->get_allow_extras()) {
    std::string words;
    for (const std::string& word : commands.front()->remaining()) words += " " + word;
    if (!words.empty()) return words;
  }
  const std::string text = problem.what();  // a single word after a colon
  return text.substr(std::min(text.find(':') + 1, text.size()));
}

// "--ca: problem" with the name of the option that the user wrote, "--cacert: problem".
std::string asWritten(const CLI::App& app, const std::string& problem,
                      const std::vector<std::string>& words) {
  const std::string name = problem.substr(0, problem.find(':'));
  const auto commands = app.get_subcommands();
  const CLI::Option* const option =
      commands.empty() ? nullptr : commands.front()->get_option_no_throw(name);
  if (option == nullptr || name.size() == problem.size()) return problem;
  std::vector<std::string> names;
  for (const std::string& longName : option->get_lnames()) names.push_back("--" + longName);
  for (const std::string& shortName : option->get_snames()) names.push_back("-" + shortName);
  for (const std::string& word : words) {
    const auto written = std::find(names.begin(), names.end(), word.substr(0, word.find('=')));
    if (written != names.end()) return *written + problem.substr(name.size());
  }
  return problem;
}

// Ignores `--`: no argument here can be mistaken for an option. `help call` is `call --help`.
std::vector<std::string> wordsOf(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  std::erase(words, "--");
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    words.resize(std::min<std::size_t>(words.size(), 1));
    std::erase(words, "help");
    words.emplace_back("--help");
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
  app.formatter(std::make_shared<HelpFormatter>());
  app.require_subcommand(1);
  // Of an option that is repeated, the last counts, so that an alias can be overridden.
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.footer(kGeneralFooter);
  addCommands(app, options);
  const std::vector<std::string> words = wordsOf(argc, argv);
  const bool isJson = std::find(words.begin(), words.end(), "--json") != words.end();
  if (words.empty()) return refused("a command is required", isJson, "");
  if (words.front()[0] != '-' && !isCommand(app, words.front())) {
    return refused("there is no command " + words.front() + suggestedCommand(app, words.front()),
                   isJson, "");
  }
  const std::string command = isCommand(app, words.front()) ? words.front() : std::string();
  try {
    app.parse(std::vector<std::string>(words.rbegin(),
                                       words.rend()));  // in the order that the parser expects
    const CLI::App* const parsed = app.get_subcommands().front();
    options.command = commandNamed(parsed->get_name());
    options.arguments = parsed->remaining();
    requireNoOptions(options.arguments);
  } catch (const CLI::ExtrasError& problem) {
    return refused(
        "unexpected argument:" + unexpectedWords(app, problem) + suggestedOption(app, words),
        isJson, command);
  } catch (const CLI::ExcludesError& problem) {
    constexpr std::string_view excludes = " excludes ";
    std::string text = problem.what();  // "--csv excludes --tsv"
    const std::size_t verb = text.find(excludes);
    if (verb != std::string::npos) text.replace(verb, excludes.size(), " cannot be used with ");
    return refused(text, isJson, command);
  } catch (const CLI::ParseError& outcome) {
    if (outcome.get_exit_code() == 0) return {std::nullopt, app.exit(outcome)};
    return refused(asWritten(app, outcome.what(), words), isJson, command);
  }
  return {options, kSuccess};
}

}  // namespace hcy::tools
