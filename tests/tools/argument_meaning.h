// SPDX-License-Identifier: Apache-2.0
//
// What an argument means, shown as the JSON that says it all.

#pragma once

#include <string>

#include "arguments/argument.h"
#include "notations/array_json.h"
#include "text/source_text.h"

namespace hcy::test {

inline std::string meaningOf(const std::string& argument) {
  const auto arrays = tools::arraysFrom({argument});
  return std::string(arrays[0].className()) + " " + tools::toJson(arrays[0]);
}

inline std::string refusalOf(const std::string& argument) {
  try {
    return "taken as " + meaningOf(argument);
  } catch (const tools::BadInput& problem) {
    return problem.what();
  }
}

}  // namespace hcy::test
