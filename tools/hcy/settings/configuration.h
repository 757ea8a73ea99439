// SPDX-License-Identifier: Apache-2.0
//
// The user's file of settings, config.toml: servers with their names.

#pragma once

#include <map>
#include <string>

#include "settings/options.h"

namespace hcy::tools {

struct Server {
  std::string url;
  Settings settings;
  std::string problem;  // why its secrets must not be used, with the place; empty if they may
};

struct Configuration {
  std::string file;           // where it was looked for
  std::string defaultServer;  // its name; may be empty
  std::map<std::string, Server> servers;
};

// Reads $HCY_CONFIG, or hcy/config.toml in $XDG_CONFIG_HOME or ~/.config, which need not exist.
// Names of files in it are relative to its directory. Throws BadInput with the place.
Configuration readConfiguration();

// Throws BadInput if others than its owner can read the file, or if it is not there.
void requirePrivate(const std::string& file);

}  // namespace hcy::tools
