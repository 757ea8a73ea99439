// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "http/body_block.h"
#include "http/client.h"
#include "http/transfer_handle.h"

namespace hcy {

// A client over one libcurl easy handle, whose connection is kept between requests. The timeout
// and TLS settings are applied once, at construction; the response size limit goes to each
// request.
class QXHttpClient : public QXClient {
 public:
  // Throws std::runtime_error when libcurl gives no handle.
  QXHttpClient() : QXHttpClient(QXHttpClientConfig()) {}
  explicit QXHttpClient(const QXClientConfig& config);

  std::unique_ptr<Request> createRequest(std::string url) override;
  const QXClientConfig& getConfig() const override { return config_; }

 private:
  QXHttpClientConfig config_;
  TransferHandle handle_;
  std::shared_ptr<SpareBlock> spareReply_ = std::make_shared<SpareBlock>();
};

}  // namespace hcy
