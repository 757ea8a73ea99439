// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

// Prints what a user needs to know of each option, and not how it is checked. All of the help is
// laid out here, since the versions of CLI11 differ in that, and completions read it. Adds the
// inputs of a function, which are not an option of CLI11: it would split a list in brackets, and
// its versions differ in what they pass to an optional positional.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode /*mode*/) const override {
    return app->get_description() + "\n" + usage(*app, name) + positionals(*app) + options(*app) +
           subcommands(*app) + "\n" + app->get_footer() + "\n";
  }

 private:
  static constexpr std::size_t kColumn = 30;

  static bool takesInputs(const CLI::App& app) { return app.get_allow_extras(); }

  static std::vector<const CLI::Option*> positionalsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
  }

  static std::string usage(const CLI::App& app, const std::string& name) {
    std::string line = "Usage: " + name + " [OPTIONS]";
    for (const CLI::Option* positional : positionalsOf(app)) {
      const std::string positionalName = positional->get_name(true);
      line += positional->get_required() ? " " + positionalName : " [" + positionalName + "]";
    }
    if (takesInputs(app)) line += " [ARG]...";
    if (!app.get_subcommands({}).empty()) line += " SUBCOMMAND";
    return line + "\n";
  }

  static std::string row(const std::string& name, const std::string& description) {
    std::string line = "  " + name;
    if (line.size() >= kColumn) line += "\n" + std::string(kColumn, ' ');
    if (line.size() < kColumn) line.resize(kColumn, ' ');
    return line + description + "\n";
  }

  static std::string row(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::string name = option.get_name(option.get_positional(), !option.get_positional());
    return row(name + (type.empty() ? "" : " " + type), option.get_description());
  }

  static std::string positionals(const CLI::App& app) {
    std::string rows;
    for (const CLI::Option* positional : positionalsOf(app)) rows += row(*positional);
    if (takesInputs(app)) rows += row("ARG", "Inputs of the function");
    return rows.empty() ? rows : "\nPositionals:\n" + rows;
  }

  static std::string options(const CLI::App& app) {
    std::string all;
    for (const std::string& group : app.get_groups()) {
      std::string rows;
      for (const CLI::Option* option : app.get_options()) {
        if (option->nonpositional() && option->get_group() == group) rows += row(*option);
      }
      // The name that CLI11 gives to the group of the others has its capitals by version.
      const bool isOwn = group != "Options" && group != "OPTIONS";
      if (!group.empty() && !rows.empty()) all += "\n" + (isOwn ? group : "Options") + ":\n" + rows;
    }
    return all;
  }

  static std::string subcommands(const CLI::App& app) {
    std::string rows;
    for (const CLI::App* subcommand : app.get_subcommands({})) {
      if (subcommand->get_group().empty()) continue;
      rows += row(subcommand->get_name(), subcommand->get_description());
    }
    return rows.empty() ? rows : "\nSubcommands:\n" + rows;
  }
};

}  // namespace hcy::tools
