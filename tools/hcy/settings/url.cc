// SPDX-License-Identifier: Apache-2.0

#include "settings/url.h"

#include <algorithm>
#include <string>

#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

bool isSame(char a, char b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  return lower(a) == lower(b);
}

}  // namespace

// libcurl also supports files and other protocols, and guesses a missing scheme.
void requireHttp(std::string_view url) {
  const std::size_t end = url.find("://");
  if (end == std::string_view::npos) {
    throw BadInput("the URL does not begin with http:// or https://");
  }
  const std::string_view scheme = url.substr(0, end);
  for (const std::string_view called : {"http", "https"}) {
    if (std::equal(scheme.begin(), scheme.end(), called.begin(), called.end(), isSame)) return;
  }
  throw BadInput("the URL must begin with http:// or https://, not " + printable(scheme) + "://");
}

}  // namespace hcy::tools
