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

// How many functions below a path are named.
constexpr std::size_t kMostNames = 8;

// "; below 'math' are 'math/plus', 'math/minus'", or nothing if no function is below the path.
std::string functionsBelow(std::string_view path, const std::vector<std::string_view>& names) {
  std::string list;
  std::size_t count = 0;
  for (const std::string_view name : names) {
    if (!name.starts_with(path) || name.substr(path.size(), 1) != "/") continue;
    if (++count <= kMostNames) list += (count == 1 ? "'" : ", '") + printable(name) + "'";
  }
  if (path.empty() || count == 0) return {};
  return "; below '" + printable(path) + (count == 1 ? "' is " : "' are ") + list +
         (count > kMostNames ? ", …" : "");
}

std::string_view lastPart(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

std::string rootOf(std::string_view url) {
  return std::string(url.substr(0, startOfPath(url))) + "/";
}

std::string_view similarFunction(std::string_view url, const std::vector<std::string_view>& names) {
  const std::string_view path = pathOf(url);
  if (path.empty() || std::find(names.begin(), names.end(), path) != names.end()) return {};
  // Capitals make no difference.
  std::vector<std::string> lower;
  lower.reserve(names.size());
  for (const std::string_view name : names) lower.push_back(lowered(name));
  const std::vector<std::string_view> known(lower.begin(), lower.end());
  const std::string wanted = lowered(path);
  const std::string_view nearest = nearestWord(wanted, known);
  if (!nearest.empty()) {
    return names[static_cast<std::size_t>(std::find(known.begin(), known.end(), nearest) -
                                          known.begin())];
  }
  std::vector<std::string_view> parts;
  parts.reserve(known.size());
  for (const std::string_view name : known) parts.push_back(lastPart(name));
  const std::string part(nearestWord(lastPart(wanted), parts));
  if (part.empty()) return {};
  const auto hasSamePart = [&part](std::string_view name) {
    return lowered(lastPart(name)) == part;
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
    const std::string below = functionsBelow(pathOf(url), names);
    if (!below.empty()) return below;
    const std::string_view similar = similarFunction(url, names);
    return similar.empty() ? "" : "; did you mean '" + printable(similar) + "'?";
  } catch (const std::exception&) {
    return {};  // the 404 is what the user needs to know
  }
}

}  // namespace hcy::tools
