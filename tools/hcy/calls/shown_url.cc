// SPDX-License-Identifier: Apache-2.0

#include "calls/shown_url.h"

#include "text/text.h"

namespace hcy::tools {

std::string shownUrl(std::string_view url) {
  const std::size_t scheme = url.find("://");
  const std::size_t user = scheme == std::string_view::npos ? 0 : scheme + 3;
  const std::string_view authority = url.substr(user, url.find_first_of("/?#", user) - user);
  const std::size_t at = authority.rfind('@');
  const std::size_t colon = authority.find(':');
  if (at == std::string_view::npos || colon > at) return printable(url);
  return printable(url.substr(0, user + colon)) + ":***" + printable(url.substr(user + at));
}

}  // namespace hcy::tools
