// SPDX-License-Identifier: Apache-2.0

#include "calls/similar_function.h"

#include <algorithm>
#include <exception>

#include "bodies/exchange.h"
#include "calls/list.h"
#include "text/suggestion.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

constexpr double kLongestWait = 2;
constexpr std::uint32_t kLargestIndex = 1048576;

// Where the path begins: at a slash, or at the end of the URL.
std::size_t startOfPath(std::string_view url) {
  const std::size_t scheme = url.find("://");
  const std::size_t host = scheme == std::string_view::npos ? 0 : scheme + 3;
  return std::min(url.find_first_of("/?#", host), url.size());
}

// Without the slashes around it and without a query.
std::string_view pathOf(std::string_view url) {
  std::string_view path = url.substr(startOfPath(url));
  path = path.substr(0, path.find_first_of("?#"));
  while (path.starts_with('/')) path.remove_prefix(1);
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

std::string_view lastPart(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

std::string rootOf(std::string_view url) {
  return std::string(url.substr(0, startOfPath(url))) + "/";
}

std::string_view similarFunction(std::string_view url, const std::vector<std::string_view>& names) {
  const std::string_view path = pathOf(url);
  if (path.empty() || std::find(names.begin(), names.end(), path) != names.end()) return {};
  const std::string_view nearest = nearestWord(path, names);
  if (!nearest.empty()) return nearest;
  const auto hasSamePart = [part = lastPart(path)](std::string_view name) {
    return lastPart(name) == part;
  };
  const auto first = std::find_if(names.begin(), names.end(), hasSamePart);
  const bool isOnly =
      first != names.end() && std::find_if(first + 1, names.end(), hasSamePart) == names.end();
  return isOnly ? *first : std::string_view();
}

std::string functionSuggestion(hcyclient::Config& config, const std::string& url,
                               double seconds) noexcept {
  try {
    config.setResponseSizeLimit(kLargestIndex);
    const double limit = seconds > 0 ? std::min(seconds, kLongestWait) : kLongestWait;
    const Exchange index = get(config, rootOf(url), {"Accept: application/json"}, limit);
    if (index.status != 200) return {};
    const std::vector<Function> functions = functionsIn(index.reply);
    std::vector<std::string_view> names;
    names.reserve(functions.size());
    for (const Function& function : functions) names.push_back(function.name);
    const std::string_view similar = similarFunction(url, names);
    return similar.empty() ? "" : "; did you mean '" + printable(similar) + "'?";
  } catch (const std::exception&) {
    return {};  // the 404 is what the user needs to know
  }
}

}  // namespace hcy::tools
