// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <memory>

namespace hcy {

struct CURLDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

// Owned by a client and every request that it made; the last owner releases it.
using TransferHandle = std::shared_ptr<CURL>;

}  // namespace hcy
