// SPDX-License-Identifier: Apache-2.0
//
// The configuration file, config.toml: servers and their settings.

#pragma once

#include <map>
#include <string>

#include "settings/options.h"

namespace hcy::tools {

struct Server {
  std::string url;
  Settings settings;
  std::string problem;  // why its secrets cannot be used, with the place; empty if they can
};

struct Configuration {
  std::string file;           // its name, also if there is none
  std::string defaultServer;  // its name; may be empty
  std::map<std::string, Server> servers;
};

// Reads $HCY_CONFIG, or hcy/config.toml in $XDG_CONFIG_HOME or ~/.config, which need not exist.
// Names of files in it are relative to its directory. Throws BadInput with the place.
Configuration readConfiguration();

// Throws BadInput if the file is accessible to other users, or if there is no such file.
void requirePrivate(const std::string& file);

}  // namespace hcy::tools
