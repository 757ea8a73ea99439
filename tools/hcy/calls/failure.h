// SPDX-License-Identifier: Apache-2.0
//
// What kept a command from its end, for a person and for a program.

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

// The failure that the exception being handled is. Throws that exception again if it is not derived
// from std::exception.
Failure currentFailure();

// For a person: "hcy: MESSAGE", and on lines of their own identifier and stack.
std::string failureText(const Failure& failure);

// An object on a line of its own: kind, message, and what else there is of line, status,
// identifier and stack.
std::string failureJson(const Failure& failure);

inline std::string failureAs(bool isJson, const Failure& failure) {
  return isJson ? failureJson(failure) : failureText(failure);
}

}  // namespace hcy::tools
