// SPDX-License-Identifier: Apache-2.0

#include "results/failure.h"

#include <exception>
#include <new>
#include <system_error>

#include "notations/no_notation.h"
#include "results/exit_status.h"
#include "results/incomplete_output.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
Failure currentFailure() {
  try {
    throw;
  } catch (const hcyclient::FunctionError& error) {
    const std::string message = error.what();
    return {"function",         message.empty() ? "the function failed without a message" : message,
            kFunctionError,     std::nullopt,
            error.identifier(), error.stack()};
  } catch (const hcyclient::HttpError& error) {
    return {"http", error.what(), kHttpError, error.status()};
  } catch (const BadInput& problem) {
    return {"usage", problem.what(), kUsage};
  } catch (const IncompleteOutput& problem) {
    return {"incomplete", problem.what(), kTransportError};
  } catch (const NoNotation& problem) {
    return {"output", problem.what(), kTransportError};
  } catch (const hcyclient::UsageError& error) {
    return {"output", error.what(), kTransportError};
  } catch (const std::system_error& error) {
    return {"output", error.what(), kTransportError};
  } catch (const std::bad_alloc&) {
    return {"transport", "not enough memory", kTransportError};
  } catch (const std::exception& error) {
    return {"transport", error.what(), kTransportError};
  }
}

std::string failureText(const Failure& failure) {
  // The message about a mistake of the user has lines of its own, which are already safe.
  const bool isOurs = failure.kind == "usage";
  const std::string line =
      failure.line ? "line " + std::to_string(*failure.line) + (isOurs ? ", " : ": ") : "";
  std::string text =
      "hcy: " + line + (isOurs ? failure.message : printableLines(failure.message, 5)) + "\n";
  if (!failure.identifier.empty()) text += "identifier: " + printable(failure.identifier) + "\n";
  for (const hcyclient::StackFrame& frame : failure.stack) {
    text += "  in " + printable(frame.name) + ", " + printable(frame.file) + ", line " +
            std::to_string(frame.line) + "\n";
  }
  return text;
}

std::string failureJson(const Failure& failure) {
  std::string json = "{";
  if (failure.line) json += "\"line\":" + std::to_string(*failure.line) + ",";
  json += "\"kind\":" + quotedValid(failure.kind) + ",\"message\":" + quotedValid(failure.message);
  if (failure.httpStatus) json += ",\"status\":" + std::to_string(*failure.httpStatus);
  if (failure.kind == "function") {
    json += ",\"identifier\":" + quotedValid(failure.identifier) + ",\"stack\":[";
    for (const hcyclient::StackFrame& frame : failure.stack) {
      if (&frame != &failure.stack.front()) json += ',';
      json += "{\"file\":" + quotedValid(frame.file) + ",\"name\":" + quotedValid(frame.name) +
              ",\"line\":" + std::to_string(frame.line) + "}";
    }
    json += ']';
  }
  return json + "}\n";
}

}  // namespace hcy::tools
