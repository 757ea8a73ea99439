// SPDX-License-Identifier: Apache-2.0
//
// The functions of the server for those who ask what there is.

#pragma once

#include <string>
#include <vector>

namespace hcy::server {

// A function as the server's index has it.
struct ListedFunction {
  std::string name;
  std::string arguments;
  std::string outputs;
};

// The functions for a person, as a table in plain text.
std::string listOfFunctions(const std::vector<ListedFunction>& functions);

// The functions for a program:
// {"functions": [{"name": ..., "arguments": ..., "summary": ...}, ...]}.
std::string functionsAsJson(const std::vector<ListedFunction>& functions);

}  // namespace hcy::server
