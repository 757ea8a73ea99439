// SPDX-License-Identifier: Apache-2.0
//
// The error that a function raises for its caller; it crosses the wire as a VORTEN_Error.

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace hcy::server {

inline constexpr char kArgumentClass[] = "halcyon:argument:class";
inline constexpr char kArgumentCount[] = "halcyon:argument:count";
inline constexpr char kArgumentSize[] = "halcyon:argument:size";
inline constexpr char kArgumentValue[] = "halcyon:argument:value";
inline constexpr char kException[] = "cpp:exception";
inline constexpr char kMatrixSingular[] = "halcyon:matrix:singular";
inline constexpr char kResultSize[] = "halcyon:result:size";
inline constexpr char kServerMemory[] = "halcyon:server:memory";

struct StackFrame {
  std::string file;
  // Left empty, it stands for the function that was called.
  std::string name;
  int line = 0;
};

class FunctionError : public std::runtime_error {
 public:
  // One frame: the function, at the line that raises the error.
  FunctionError(std::string identifier, const std::string& message,
                const char* file = __builtin_FILE(), int line = __builtin_LINE())
      : std::runtime_error(message),
        identifier_(std::move(identifier)),
        ownFrame_{fileName(file), "", line} {}

  // `depth` frames, innermost first, each made when it is needed: all at once would take far more
  // memory than the reply.
  FunctionError(std::string identifier, const std::string& message, int depth,
                std::function<StackFrame(int)> frameAt)
      : std::runtime_error(message),
        identifier_(std::move(identifier)),
        depth_(depth),
        frameAt_(std::make_shared<const std::function<StackFrame(int)>>(std::move(frameAt))) {}

  FunctionError(std::string identifier, const std::string& message,
                const std::vector<StackFrame>& stack)
      : FunctionError(std::move(identifier), message, static_cast<int>(stack.size()),
                      [stack](int index) { return stack[static_cast<std::size_t>(index)]; }) {}

  const std::string& identifier() const { return identifier_; }
  int depth() const { return depth_; }
  StackFrame frame(int index) const { return frameAt_ ? (*frameAt_)(index) : ownFrame_; }

 private:
  static std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
  }

  std::string identifier_;
  int depth_ = 1;
  StackFrame ownFrame_{};
  // Shared, so that copying the exception cannot fail.
  std::shared_ptr<const std::function<StackFrame(int)>> frameAt_;
};

inline FunctionError noMemoryForCall(const char* file = __builtin_FILE(),
                                     int line = __builtin_LINE()) {
  return {kServerMemory, "The server does not have enough memory for this call.", file, line};
}

inline FunctionError missingOutputs(std::size_t returned, std::size_t requested,
                                    const char* file = __builtin_FILE(),
                                    int line = __builtin_LINE()) {
  const std::string message = "The function returned " + std::to_string(returned) +
                              " outputs, but " + std::to_string(requested) + " were requested.";
  return {kArgumentCount, message, file, line};
}

}  // namespace hcy::server
