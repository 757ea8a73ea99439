// SPDX-License-Identifier: Apache-2.0
//
// The options for TLS, of hcy and of the local server, which is a client of other servers.

#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "settings/tls_settings.h"

namespace hcy::tools {

// How the options are named, and the group of the help that they are in. Behind a prefix, such as
// "upstream-", there are no other names.
struct TlsOptionNames {
  std::string prefix;
  const char* group;
};

// Adds the options for files, such as --cert, which fill in the settings.
std::vector<CLI::Option*> addTlsFiles(CLI::App& app, TlsSettings& settings,
                                      const TlsOptionNames& names);

// Adds the options that leave a verification out, such as --no-verify-host.
std::vector<CLI::Option*> addTlsVerification(CLI::App& app, TlsSettings& settings,
                                             const TlsOptionNames& names);

}  // namespace hcy::tools
