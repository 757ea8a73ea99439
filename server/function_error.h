// SPDX-License-Identifier: Apache-2.0
//
// The error that a function raises for its caller; it crosses the wire as a VORTEN_Error.

#pragma once

#include <stdexcept>
#include <string>
#include <utility>

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
                StackFrame (*frameAt)(int))
      : std::runtime_error(message),
        identifier_(std::move(identifier)),
        depth_(depth),
        frameAt_(frameAt) {}

  const std::string& identifier() const { return identifier_; }
  int depth() const { return depth_; }
  StackFrame frame(int index) const { return frameAt_ == nullptr ? ownFrame_ : frameAt_(index); }

 private:
  static std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
  }

  std::string identifier_;
  int depth_ = 1;
  StackFrame ownFrame_{};
  StackFrame (*frameAt_)(int) = nullptr;
};

}  // namespace hcy::server
