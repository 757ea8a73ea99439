// SPDX-License-Identifier: Apache-2.0
//
// Files and arguments, and messages about mistakes in them.

#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace hcy::tools {

// The user gave something that cannot be used; what() says what and where.
class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A mistake at an offset of a text. The caller knows the name of the text.
class BadText : public std::runtime_error {
 public:
  BadText(std::size_t at, const std::string& problem) : std::runtime_error(problem), offset(at) {}
  std::size_t offset;
};

// The message for BadInput: name, line and column, the problem, and the line with a mark below the
// mistake.
std::string located(const std::string& name, std::string_view text, const BadText& problem);

// The same for a text of one line, without name and line.
std::string locatedInLine(std::string_view text, const BadText& problem);

// Replaces "~/" at the start of a file name by the home directory.
std::string expandedHome(std::string_view file);

// Throws BadInput with the name of the file and the meaning of errno.
[[noreturn]] void refuseFile(const std::string& name);

// Refuses an opened file by BadInput with its name.
using FileCheck = std::function<void(int descriptor, const std::string& name)>;

// The contents of a file, or of the standard input for "-", if it passes the check. Throws
// BadInput.
std::string contentsOf(const std::string& file, const FileCheck& check = {});

}  // namespace hcy::tools
