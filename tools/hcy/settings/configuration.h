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
};

struct Configuration {
  std::string file;           // its name, also if there is none
  std::string defaultServer;  // its name; may be empty
  std::map<std::string, Server> servers;
};

// Reads $HCY_CONFIG, or hcy/config.toml in $XDG_CONFIG_HOME or ~/.config, which need not exist.
// Names of files in it are relative to its directory. Throws BadInput with the place, or
// if other users can change the file: they could turn off the verification of servers.
Configuration readConfiguration();

}  // namespace hcy::tools
