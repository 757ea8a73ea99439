// SPDX-License-Identifier: Apache-2.0

#include "settings/configuration.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include "settings/file_access.h"
#include "text/source_text.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

namespace fs = std::filesystem;

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string configurationFile() {
  std::string file = environment("HCY_CONFIG");
  if (!file.empty()) return file;
  std::string directory = environment("XDG_CONFIG_HOME");
  if (directory.empty()) directory = environment("HOME") + "/.config";
  return directory + "/hcy/config.toml";
}

// Reads the tables of the file.
class Reader {
 public:
  explicit Reader(std::string file) : file_(std::move(file)) {}

  Configuration read(std::string_view text) {
    Configuration configuration{file_, {}, {}};
    const toml::table table = parsed(text);
    for (const auto& [key, value] : table) {
      if (key == "default") {
        configuration.defaultServer = stringFrom(value);
      } else if (key == "servers" && value.is_table()) {
        for (const auto& [name, server] : *value.as_table()) {
          configuration.servers.emplace(name.str(), serverFrom(server));
        }
      } else {
        refuseKey(key, {"default", "servers"});
      }
    }
    return configuration;
  }

 private:
  std::string located(const toml::source_region& place, const std::string& problem) const {
    return printable(file_) + ", line " + std::to_string(place.begin.line) + ", column " +
           std::to_string(place.begin.column) + ": " + problem;
  }
  [[noreturn]] void refuse(const toml::source_region& place, const std::string& problem) const {
    throw BadInput(located(place, problem));
  }
  [[noreturn]] void refuseKey(const toml::key& key,
                              const std::vector<std::string_view>& known) const {
    refuse(key.source(),
           "there is no setting " + printable(key.str()) + suggestionFor(key.str(), known));
  }

  toml::table parsed(std::string_view text) const {
    try {
      return toml::parse(text, file_);
    } catch (const toml::parse_error& error) {
      refuse(error.source(), std::string(error.description()));
    }
  }

  template <class T>
  T valueFrom(const toml::node& node, const char* wanted) const {
    const auto value = node.value_exact<T>();
    if (!value) refuse(node.source(), std::string("expected ") + wanted);
    return *value;
  }
  std::string stringFrom(const toml::node& node) const {
    return valueFrom<std::string>(node, "a string");
  }
  std::string fileFrom(const toml::node& node) const {
    const fs::path file = expandedHome(stringFrom(node));
    return file.is_absolute() ? file.string() : (fs::path(file_).parent_path() / file).string();
  }
  double secondsFrom(const toml::node& node) const {
    const auto seconds = node.value<double>();
    if (!seconds || !(*seconds >= 0 && *seconds <= std::numeric_limits<std::uint32_t>::max())) {
      refuse(node.source(), "expected a number of seconds between 0 and 4294967295");
    }
    return *seconds;
  }
  std::uint32_t bytesFrom(const toml::node& node) const {
    const auto bytes = valueFrom<std::int64_t>(node, "a number of bytes");
    if (!std::in_range<std::uint32_t>(bytes))
      refuse(node.source(), "must be between 0 and 4294967295");
    return static_cast<std::uint32_t>(bytes);
  }

  Server serverFrom(const toml::node& node) const {
    const toml::table* const table = node.as_table();
    if (table == nullptr) refuse(node.source(), "expected a table with the url of a server");
    Server server;
    for (const auto& [key, value] : *table) set(server, key, value);
    if (server.url.empty()) refuse(node.source(), "the url of the server is missing");
    return server;
  }

  void set(Server& server, const toml::key& key, const toml::node& value) const {
    Settings& settings = server.settings;
    if (key == "url") {
      server.url = stringFrom(value);
    } else if (key == "timeout") {
      settings.timeout = secondsFrom(value);
    } else if (key == "max-reply") {
      settings.largestReply = bytesFrom(value);
    } else if (key == "ca") {
      settings.authorityFile = fileFrom(value);
    } else if (key == "crl") {
      settings.revocationListFile = fileFrom(value);
    } else if (key == "cert") {
      settings.certificateFile = fileFrom(value);
    } else if (key == "key") {
      settings.keyFile = fileFrom(value);
    } else if (key == "key-pass-file") {
      settings.passPhraseFile = fileFrom(value);
    } else if (key == "ask-key-pass") {
      settings.asksPassPhrase = valueFrom<bool>(value, "true or false");
    } else if (key == "verify-host") {
      settings.verifiesHost = valueFrom<bool>(value, "true or false");
    } else if (key == "verify-peer") {
      settings.verifiesPeer = valueFrom<bool>(value, "true or false");
    } else {
      refuseKey(key, {"url", "timeout", "max-reply", "ca", "crl", "cert", "key", "key-pass-file",
                      "ask-key-pass", "verify-host", "verify-peer"});
    }
  }

  std::string file_;
};

}  // namespace

Configuration readConfiguration() {
  const std::string file = configurationFile();
  std::error_code ignored;
  if (environment("HCY_CONFIG").empty() && !fs::exists(file, ignored)) return {file, {}, {}};
  return Reader(file).read(contentsOf(file, requireUnalterable));
}

}  // namespace hcy::tools
