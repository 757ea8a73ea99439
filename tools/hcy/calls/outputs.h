// SPDX-License-Identifier: Apache-2.0
//
// Where the outputs of a call go, and in which form.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <optional>
#include <string>
#include <vector>

namespace hcy::tools {

enum class Form { kDisplay, kJson, kRaw, kCsv, kTsv, kNpy };

struct OutputSettings {
  std::optional<Form> form;          // if none is said, that of the file's ending
  std::optional<std::size_t> width;  // if none is said, that of the terminal
  bool isFolded = true;              // on a terminal
  std::vector<std::string> files;    // one for all outputs, or one for each
};

// Refuses what the settings cannot do with so many outputs. Throws BadInput.
void requireOutputs(const OutputSettings& settings, std::size_t count);

// Prints the outputs, or writes them to their files, none of which is touched unless all outputs
// have a form. Throws NoNotation, and std::system_error if they cannot be written. The outputs are
// whole.
void showOutputs(const std::vector<hcyclient::Array>& outputs, const OutputSettings& settings);

}  // namespace hcy::tools
