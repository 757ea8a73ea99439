// SPDX-License-Identifier: Apache-2.0

#include "settings/target.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/configuration.h"
#include "text/source_text.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

bool hasScheme(std::string_view url) { return url.find("://") != std::string_view::npos; }

// A colon before the path belongs to a scheme or a port.
bool isPath(std::string_view word) {
  return word.substr(0, word.find('/')).find(':') == std::string_view::npos;
}

std::string joined(std::string url, std::string_view path) {
  while (url.ends_with('/')) url.pop_back();
  while (path.starts_with('/')) path.remove_prefix(1);
  return url + "/" + std::string(path);
}

// Settings of the command line take precedence.
void fillIn(Settings& settings, const Settings& configured) {
  if (!settings.timeout) settings.timeout = configured.timeout;
  if (!settings.largestReply) settings.largestReply = configured.largestReply;
  const auto fillFile = [](std::string& file, const std::string& other) {
    if (file.empty()) file = other;
  };
  fillFile(settings.authorityFile, configured.authorityFile);
  fillFile(settings.revocationListFile, configured.revocationListFile);
  // Certificate, key and pass phrase belong together.
  if (settings.certificateFile.empty() && settings.keyFile.empty()) {
    settings.certificateFile = configured.certificateFile;
    settings.keyFile = configured.keyFile;
    settings.passPhraseFile = configured.passPhraseFile;
    settings.asksPassPhrase = configured.asksPassPhrase;
  }
  settings.verifiesHost = settings.verifiesHost && configured.verifiesHost;
  settings.verifiesPeer = settings.verifiesPeer && configured.verifiesPeer;
}

const Server& serverNamed(const Configuration& configuration, const std::string& name) {
  const auto found = configuration.servers.find(name);
  if (found != configuration.servers.end()) return found->second;
  std::vector<std::string_view> names;
  for (const auto& [known, server] : configuration.servers) names.push_back(known);
  throw BadInput(printable(configuration.file) + ": there is no server " + printable(name) +
                 suggestionFor(name, names));
}

void use(const Server& server, std::string_view path, Options& options) {
  options.url = joined(server.url, path);
  fillIn(options.settings, server.settings);
}

// @SERVER/PATH, or @SERVER and the path as the next word.
void resolveName(Options& options) {
  const std::size_t slash = options.url.find('/');
  const std::string name = options.url.substr(1, slash - 1);
  if (name.empty()) {
    throw BadInput("the name of a server must follow the @ of " + printable(options.url));
  }
  std::string path;
  if (slash != std::string::npos) {
    path = options.url.substr(slash);
  } else if (!options.arguments.empty()) {
    path = options.arguments.front();
    options.arguments.erase(options.arguments.begin());
  } else {
    throw BadInput("a function must follow " + printable(options.url));
  }
  const Configuration configuration = readConfiguration();
  use(serverNamed(configuration, name), path, options);
}

void resolvePath(Options& options) {
  const char* const variable = std::getenv("HCY_SERVER");
  const std::string server = variable == nullptr ? "" : variable;
  if (hasScheme(server)) {
    options.url = joined(server, options.url);
    return;
  }
  const Configuration configuration = readConfiguration();
  const std::string name = server.starts_with('@') ? server.substr(1) : configuration.defaultServer;
  if (!server.empty() && !server.starts_with('@')) {
    throw BadInput("HCY_SERVER must be a URL or @NAME, but is " + printable(server));
  }
  if (name.empty()) {
    throw BadInput("the URL does not begin with http:// or https://, and neither HCY_SERVER nor " +
                   printable(configuration.file) + " names a server");
  }
  use(serverNamed(configuration, name), options.url, options);
}

}  // namespace

void resolveTarget(Options& options) {
  if (!options.against.empty()) {
    Options other = options;
    other.url = std::exchange(other.against, {});
    other.arguments.clear();
    resolveTarget(other);
    options.against = other.url;
    options.againstSettings = other.settings;
  }
  // The index of a server is at its root.
  const bool isRoot = options.command == Command::kList;
  if (isRoot && options.url.starts_with('@') && options.url.find('/') == std::string::npos) {
    options.url += '/';
  }
  if (!isRoot && options.url.empty()) throw BadInput("the URL is empty");
  if (options.url.starts_with('@')) return resolveName(options);
  if (!hasScheme(options.url) && isPath(options.url)) resolvePath(options);
}

}  // namespace hcy::tools
