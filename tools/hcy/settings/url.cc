// SPDX-License-Identifier: Apache-2.0

#include "settings/url.h"

#include <algorithm>
#include <new>
#include <string>

#include "settings/curl_url.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

bool isSame(char a, char b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  return lower(a) == lower(b);
}

void requireWellFormed(const std::string& url) {
  const auto isForbidden = [](char c) { return (c >= '\0' && c <= ' ') || c == '\x7f'; };
  if (std::any_of(url.begin(), url.end(), isForbidden)) {
    throw BadInput("the URL contains a space or a control character; write %20 for a space");
  }
  const CurlUrl parser(curl_url());
  if (!parser) throw std::bad_alloc();
  const CURLUcode code = curl_url_set(parser.get(), CURLUPART_URL, url.c_str(), 0);
  if (code == CURLUE_OUT_OF_MEMORY) throw std::bad_alloc();
  if (code == CURLUE_BAD_PORT_NUMBER) {
    throw BadInput("the port in the URL must be a number from 0 to 65535");
  }
  if (code != CURLUE_OK) throw BadInput("the URL is malformed; check its host and port");
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
    if (std::equal(scheme.begin(), scheme.end(), called.begin(), called.end(), isSame)) {
      return requireWellFormed(std::string(url));
    }
  }
  throw BadInput("the URL must begin with http:// or https://, not " + printable(scheme) + "://");
}

}  // namespace hcy::tools
