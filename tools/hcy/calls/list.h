// SPDX-License-Identifier: Apache-2.0
//
// hcy list: the functions of a server.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "settings/options.h"

namespace hcy::tools {

struct Function {
  std::string name, arguments, summary;
};

// The functions that a server's index names, in its order:
// {"functions":[{"name":…,"arguments":…,"summary":…}]}. Only the name of a function is required;
// unknown members are ignored. Throws BadText.
std::vector<Function> functionsIn(std::string_view index);

// Requests the index of the server and shows it. Returns the exit status. Throws BadInput, and
// hcyclient::CallError if the request fails or the reply is not an index.
int list(const Options& options);

}  // namespace hcy::tools
