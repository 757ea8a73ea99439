// SPDX-License-Identifier: Apache-2.0

#include "settings/url.h"

#include <gtest/gtest.h>

#include <string>

#include "text/source_text.h"

namespace hcy::test {
namespace {

TEST(Url, isOfHttpOrHttps) {
  for (const std::string url : {"http://h/f", "https://h/f", "HTTP://h", "hTTpS://h:1/f"}) {
    EXPECT_NO_THROW(tools::requireHttp(url)) << url;
  }
}

TEST(Url, ofAnotherSchemeOrNoneIsRefused) {
  for (const std::string url : {"", "h/f", "localhost:8080/f", "//h/f", "http:h", "http:/h", "http",
                                " http://h", "httpx://h", "httpss://h", "ftp://h", "file:///f",
                                "telnet://h:1", "gopher://h", "://h", "h/f?u=http://h"}) {
    EXPECT_THROW(tools::requireHttp(url), tools::BadInput) << url;
  }
}

}  // namespace
}  // namespace hcy::test
