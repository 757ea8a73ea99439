// SPDX-License-Identifier: Apache-2.0

#include "calls/list.h"

#include <unistd.h>

#include <algorithm>

#include "bodies/exchange.h"
#include "notations/json_value.h"
#include "output/terminal.h"
#include "results/exit_status.h"
#include "settings/settings.h"
#include "settings/url.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

// A string, or a list of strings, joined with blanks.
std::string textOf(const JsonValue& value) {
  if (const auto* const text = value.as<std::string>()) return *text;
  const auto* const list = value.as<JsonList>();
  if (list == nullptr) throw BadText(value.offset, "expected a string or a list of strings");
  std::string joined;
  for (const JsonValue& item : *list) {
    const auto* const text = item.as<std::string>();
    if (text == nullptr) throw BadText(item.offset, "expected a string");
    joined += (joined.empty() ? "" : " ") + *text;
  }
  return joined;
}

Function functionFrom(const JsonValue& value) {
  const auto* const object = value.as<JsonObject>();
  if (object == nullptr) throw BadText(value.offset, "a function must be an object");
  Function function;
  for (const JsonMember& member : *object) {
    if (member.name == "name") function.name = textOf(member.value);
    if (member.name == "arguments") function.arguments = textOf(member.value);
    if (member.name == "summary") function.summary = textOf(member.value);
  }
  if (function.name.empty()) throw BadText(value.offset, "a function has no name");
  return function;
}

// Names, arguments and summaries in columns.
std::string tableOf(const std::vector<Function>& functions, std::size_t width) {
  const auto call = [](const Function& function) {
    const std::string name = printable(function.name);
    return function.arguments.empty() ? name : name + " " + printable(function.arguments);
  };
  std::size_t widest = 0;
  for (const Function& function : functions) {
    widest = std::max(widest, displayWidth(call(function)));
  }
  std::string lines;
  for (const Function& function : functions) {
    std::string line = call(function);
    if (!function.summary.empty()) {
      line.append(widest - displayWidth(line) + 2, ' ').append(printable(function.summary));
    }
    lines += cutToWidth(line, width) + "\n";
  }
  return lines;
}

std::string indexOf(const Options& options) {
  const hcyclient::Library library;
  const hcyclient::Config config = configFrom(library, options.settings);
  const double seconds =
      options.settings.timeout.value_or(library.runtime()->getTimeOut(config.get()));
  const Exchange exchange = get(config, options.url, {"Accept: application/json"}, seconds);
  if (exchange.status != 200) throw hcyclient::HttpError(exchange.status, exchange.reason);
  if (exchange.isTooLong) {
    throw hcyclient::TransportError("the index is larger than --max-reply allows, " +
                                    std::to_string(exchange.reply.size() - 1) + " bytes");
  }
  return exchange.reply;
}

}  // namespace

std::vector<Function> functionsIn(std::string_view index) {
  const JsonValue value = parseJson(index);
  const auto* const object = value.as<JsonObject>();
  if (object == nullptr) throw BadText(value.offset, "the index must be an object");
  for (const JsonMember& member : *object) {
    if (member.name != "functions") continue;
    const auto* const list = member.value.as<JsonList>();
    if (list == nullptr) throw BadText(member.value.offset, "the functions must be a list");
    std::vector<Function> functions;
    for (const JsonValue& item : *list) functions.push_back(functionFrom(item));
    return functions;
  }
  throw BadText(value.offset, "the index has no list of functions");
}

int list(const Options& options) {
  requireHttp(options.url);
  const std::string index = indexOf(options);
  std::vector<Function> functions;
  try {
    functions = functionsIn(index);
  } catch (const BadText& problem) {
    throw hcyclient::TransportError("the server did not send an index of its functions as JSON: " +
                                    std::string(problem.what()));
  }
  const Form form = options.output.form.value_or(Form::kDisplay);
  if (form == Form::kJson) {
    printText(index.ends_with('\n') ? index : index + "\n");
  } else if (form == Form::kRaw) {
    std::string names;
    for (const Function& function : functions) names += printable(function.name) + "\n";
    print(names);
  } else {
    print(tableOf(functions, widthOf(STDOUT_FILENO)));
  }
  return kSuccess;
}

}  // namespace hcy::tools
