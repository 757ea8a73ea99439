// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "recordings.h"

namespace hcy::server {

// Why nothing was found for a request: which recorded one comes nearest to it, and where they
// differ. Lines of plain text.
std::string explainMiss(const Recordings& recordings, std::string_view path,
                        std::string_view request);

}  // namespace hcy::server
