// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <curl/curl.h>

#include <cstdint>

namespace hcy {

// The buffers through which libcurl sends and receives. A large body passes through large ones with
// fewer system calls; a handle that has only small ones keeps libcurl's own.
class TransferBuffers {
 public:
  static constexpr std::uint64_t kLargeBody = std::uint64_t{64} << 10;
  static constexpr long kUpload = 512L << 10;
  static constexpr long kReceive = 256L << 10;

  // To be called before a transfer. A handle keeps a large buffer once it has one.
  void fit(CURL* handle, std::uint64_t bodySize) {
    if (bodySize > kLargeBody && !isUploadLarge_) {
      isUploadLarge_ = true;
      curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, kUpload);
    }
    if (isReceiveLarge_ || !hasLargeReply_) return;
    isReceiveLarge_ = true;
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kReceive);
  }

  // After a transfer: whoever had one large reply will have more.
  void noteReply(std::uint64_t bodySize) {
    hasLargeReply_ = hasLargeReply_ || bodySize > kLargeBody;
  }

 private:
  bool isUploadLarge_ = false;
  bool hasLargeReply_ = false;
  bool isReceiveLarge_ = false;
};

}  // namespace hcy
