// SPDX-License-Identifier: Apache-2.0
//
// The error that a function raises for its caller; it crosses the wire as a VORTEN_Error.

#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace hcy::server {

inline constexpr char kArgumentClass[] = "halcyon:argument:class";
inline constexpr char kArgumentCount[] = "halcyon:argument:count";
inline constexpr char kArgumentSize[] = "halcyon:argument:size";
inline constexpr char kArgumentValue[] = "halcyon:argument:value";
inline constexpr char kMatrixSingular[] = "halcyon:matrix:singular";
inline constexpr char kResultSize[] = "halcyon:result:size";
inline constexpr char kServerMemory[] = "halcyon:server:memory";

struct StackFrame {
  std::string file;
  // Left empty, it stands for the function that was called.
  std::string name;
  int line;
};

class FunctionError : public std::runtime_error {
 public:
  // One frame: the function, at the line that raises the error.
  FunctionError(std::string identifier, const std::string& message,
                const char* file = __builtin_FILE(), int line = __builtin_LINE())
      : FunctionError(std::move(identifier), message, {{fileName(file), "", line}}) {}

  // The frames innermost first.
  FunctionError(std::string identifier, const std::string& message, std::vector<StackFrame> stack)
      : std::runtime_error(message), identifier_(std::move(identifier)), stack_(std::move(stack)) {}

  const std::string& identifier() const { return identifier_; }
  const std::vector<StackFrame>& stack() const { return stack_; }

 private:
  static std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
  }

  std::string identifier_;
  std::vector<StackFrame> stack_;
};

}  // namespace hcy::server
