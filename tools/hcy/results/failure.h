// SPDX-License-Identifier: Apache-2.0
//
// Why a command failed, for people and for programs.

#pragma once

#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <optional>
#include <string>
#include <vector>

namespace hcy::tools {

struct Failure {
  std::string kind;  // function, http, transport, incomplete, output, usage
  std::string message;
  int exitStatus = 0;
  std::optional<std::uint32_t> httpStatus = {};
  std::string identifier = {};  // of a function's error
  std::vector<hcyclient::StackFrame> stack = {};
  std::optional<std::uint64_t> line = {};  // of the arguments, if each line is a call
};

// Describes the exception that is being handled. Rethrows it if it is not derived from
// std::exception.
Failure currentFailure();

// For people: "hcy: MESSAGE", then the identifier and the stack on their own lines.
std::string failureText(const Failure& failure);

// A JSON object on its own line: kind and message and, if there are any, line, status, identifier
// and stack.
std::string failureJson(const Failure& failure);

inline std::string failureAs(bool isJson, const Failure& failure) {
  return isJson ? failureJson(failure) : failureText(failure);
}

}  // namespace hcy::tools
