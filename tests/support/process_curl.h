// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

namespace hcy::test {

// libcurl's process-wide part, which a client relies on.
class ProcessCurl {
 public:
  ProcessCurl() { curl_global_init(CURL_GLOBAL_ALL); }
  ProcessCurl(const ProcessCurl&) = delete;
  ProcessCurl& operator=(const ProcessCurl&) = delete;
  ~ProcessCurl() { curl_global_cleanup(); }
};

}  // namespace hcy::test
