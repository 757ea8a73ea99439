// SPDX-License-Identifier: Apache-2.0
//
// The arguments of a call, as they are written on the command line.

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

namespace hcy::tools {

struct ArgumentSettings {
  char delimiter = ',';  // of csv
};

// Each argument is JSON, text, a table or a .npy file: written out, from a file (@data.json) or
// from the standard input (-), with or without classes in front (int16:[1,2]). An argument makes an
// array for each of its choices of columns. Throws BadInput with the argument and the place in it.
std::vector<hcyclient::Array> arraysFrom(const std::vector<std::string>& arguments,
                                         const ArgumentSettings& settings = {});

}  // namespace hcy::tools
