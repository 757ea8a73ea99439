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
// {"functions":[{"name":…,"arguments":…,"summary":…}]}. Of a function only the name must be there;
// members that are not known are left out. Throws BadText.
std::vector<Function> functionsIn(std::string_view index);

// Gets the index of the server and shows it. Returns the exit status. Throws BadInput, and what
// keeps the index from arriving.
int list(const Options& options);

}  // namespace hcy::tools
