// SPDX-License-Identifier: Apache-2.0
//
// Texts that come from outside, and what is wrong with them.

#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace hcy::tools {

// The user gave something that cannot be used; what() says what and where.
class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Something is wrong at an offset of a text, whose name is known further out.
class BadText : public std::runtime_error {
 public:
  BadText(std::size_t at, const std::string& problem) : std::runtime_error(problem), offset(at) {}
  std::size_t offset;
};

// What BadInput says of it: name, line and column, the problem, and the line with a mark below the
// place.
std::string located(const std::string& name, std::string_view text, const BadText& problem);

// The same of a text of one line, without name and line.
std::string locatedInLine(std::string_view text, const BadText& problem);

// The name of a file in which "~/" at the start is the home directory.
std::string expandedHome(std::string_view file);

// The contents of a file, or of the standard input for "-"; throws BadInput.
std::string contentsOf(const std::string& file);

// Makes the file, or writes over it; throws std::system_error with its name.
void writeFile(const std::string& file, std::string_view contents);

}  // namespace hcy::tools
