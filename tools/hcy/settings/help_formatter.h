// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>

namespace hcy::tools {

// Prints what a user needs to know of each option, and not how it is checked. Adds the inputs of a
// function, which are not an option of CLI11: it would split a list in brackets, and its versions
// differ in what they pass to an optional positional.
class HelpFormatter : public CLI::Formatter {
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
    lines.insert(lines.find_last_not_of('\n') + 1, "\n" + name + "Inputs of the function");
    return lines;
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    return type.empty() ? "" : " " + type;
  }
  std::string make_option_usage(const CLI::Option* option) const override {
    const std::string name = option->get_name(true);
    return option->get_required() ? name : "[" + name + "]";
  }

 private:
  static bool takesInputs(const CLI::App& app) { return app.get_allow_extras(); }
};

}  // namespace hcy::tools
