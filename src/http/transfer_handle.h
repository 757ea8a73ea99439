// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <memory>
#include <new>

#include "http/kept_connections.h"
#include "http/transfer_buffers.h"

namespace hcy {

struct CURLDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

// A handle of libcurl, and what is known of its transfers.
struct Transfer {
  std::unique_ptr<CURL, CURLDeleter> curl;
  KeptConnections connections;
  TransferBuffers buffers;
};

// Owned by a client and every request that it made; the last owner releases it.
using TransferHandle = std::shared_ptr<Transfer>;

// libcurl keeps a copy of a text. Without memory for it the option would silently be unset, which
// must not happen to one that a transfer's safety rests on.
inline void setTextOption(CURL* handle, CURLoption option, const char* text) {
  if (curl_easy_setopt(handle, option, text) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
}

}  // namespace hcy
