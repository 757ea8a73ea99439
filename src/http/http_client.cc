// SPDX-License-Identifier: Apache-2.0

#include "http/http_client.h"

#include <stdexcept>
#include <utility>

#include "http/http_request.h"

namespace hcy {
namespace {

TransferHandle newTransferHandle() {
  auto handle = std::make_shared<Transfer>();
  handle->curl.reset(curl_easy_init());
  if (!handle->curl) throw std::runtime_error("Initialization of a transfer handle failed");
  return handle;
}

// An empty setting leaves libcurl's own default.
void setText(CURL* handle, CURLoption option, const char* text) {
  if (*text != '\0') setTextOption(handle, option, text);
}

void applySettings(CURL* handle, const QXClientConfig& config) {
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(handle, CURLOPT_TIMEOUT, static_cast<long>(config.getTimeOut()));
  setText(handle, CURLOPT_SSLCERT, config.getClientCertFile());
  setText(handle, CURLOPT_SSLKEY, config.getClientPrivateKeyFile());
  setText(handle, CURLOPT_KEYPASSWD, config.getPrivateKeyPasswd());
  setText(handle, CURLOPT_CAINFO, config.getCAFile());
  setText(handle, CURLOPT_CRLFILE, config.getRevocationListFile());
  // 2 is full verification; 1 is no setting of its own.
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, config.getHostnameVerification() ? 2L : 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, config.getPeerVerification() ? 1L : 0L);
}

}  // namespace

QXHttpClient::QXHttpClient(const QXClientConfig& config)
    : config_(config), handle_(newTransferHandle()) {
  applySettings(handle_->curl.get(), config_);
}

std::unique_ptr<Request> QXHttpClient::createRequest(std::string url) {
  return std::make_unique<HttpRequest>(handle_, std::move(url), config_.getResponseSizeLimit(),
                                       spareReply_);
}

}  // namespace hcy
