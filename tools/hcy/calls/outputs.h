// SPDX-License-Identifier: Apache-2.0
//
// The destination of the outputs of a call, and their format.

#pragma once

#include <cstddef>
#include <hcy/hcyclient.hpp>
#include <vector>

#include "settings/output_settings.h"

namespace hcy::tools {

// Throws BadInput if the settings do not work for this number of outputs.
void requireOutputs(const OutputSettings& settings, std::size_t count);

// Prints the outputs or writes them to their files. Throws NoNotation before it touches any file if
// an output has no such form, and std::system_error if the outputs cannot be written. The outputs
// must be complete.
void showOutputs(const std::vector<hcyclient::Array>& outputs, const OutputSettings& settings);

}  // namespace hcy::tools
