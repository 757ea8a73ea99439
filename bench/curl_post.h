// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "peer.h"

namespace hcy::bench {

// POSTs over one libcurl handle, which keeps its connection: the same request, under the same limit
// of time, as the library's, so that a comparison shows only what the library adds.
class CurlPost {
 public:
  // Each piece of a reply's body goes to `write` with `user`.
  CurlPost(Port port, curl_write_callback write, void* user)
      : handle_(curl_easy_init()),
        headers_(curl_slist_append(nullptr, "Content-Type: application/x-google-protobuf")) {
    if (!handle_ || !headers_) throw std::runtime_error("no libcurl handle");
    curl_slist_append(headers_.get(), "User-Agent: Halcyon C client");
    curl_slist_append(headers_.get(), "Expect:");
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/echo";
    curl_easy_setopt(handle_.get(), CURLOPT_TIMEOUT, 120L);
    curl_easy_setopt(handle_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEFUNCTION, write);
    curl_easy_setopt(handle_.get(), CURLOPT_WRITEDATA, user);
  }

  void perform(const std::string& body) {
    curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(handle_.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(body.size()));
    const CURLcode code = curl_easy_perform(handle_.get());
    if (code != CURLE_OK) throw std::runtime_error(curl_easy_strerror(code));
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    if (status != 200) throw std::runtime_error("status " + std::to_string(status));
  }

 private:
  struct Cleaner {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };
  std::unique_ptr<CURL, Cleaner> handle_;
  std::unique_ptr<curl_slist, Cleaner> headers_;
};

}  // namespace hcy::bench
