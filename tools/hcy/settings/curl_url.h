// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <memory>

namespace hcy::tools {

struct CurlUrlDeleter {
  void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
};
using CurlUrl = std::unique_ptr<CURLU, CurlUrlDeleter>;

}  // namespace hcy::tools
