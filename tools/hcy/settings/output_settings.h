// SPDX-License-Identifier: Apache-2.0
//
// How outputs are shown.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace hcy::tools {

enum class Form { kDisplay, kJson, kRaw, kCsv, kTsv, kNpy };

struct OutputSettings {
  std::optional<Form> form;          // by default that of the file's ending
  std::optional<std::size_t> width;  // by default that of the terminal
  bool isFolded = true;              // on a terminal
  char delimiter = ',';              // of csv
  std::vector<std::string> files;    // one for all outputs, or one for each
};

}  // namespace hcy::tools
