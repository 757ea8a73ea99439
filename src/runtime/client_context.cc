// SPDX-License-Identifier: Apache-2.0

#include "runtime/client_context.h"

#include <stdexcept>
#include <utility>

#include "http/http_client.h"
#include "runtime/client_config_slots.h"
#include "runtime/exception_text.h"

void hcyClientContext::setHttpError(const hcy::Response& response) {
  httpStatusMessage = response.statusMessage();
  httpStatus = response.statusCode();
  errorKind = HCY_HTTP_ERROR;
  errorMessage = "A non-200 HTTP response was received";
}

void hcyClientContext::setVortenError(hcy::client::VORTEN_Error&& error) {
  vortenError = std::move(error);
  errorKind = HCY_VORTEN_ERROR;
  errorMessage = "Error was thrown while executing VORTEN code";
}

void hcyClientContext::setGenericError(const std::exception& exception) noexcept {
  errorKind = HCY_GENERIC_ERROR;
  errorMessage = "A generic error was thrown";
  hcy::storeText(exception, errorDetails);
}

namespace hcy {

int createContext(hcyClientContext** context, const hcyClientConfig* config) {
  try {
    *context = new hcyClientContext{};
    if (!config->config) throw std::invalid_argument("The configuration is incomplete.");
    (*context)->client = std::make_unique<QXHttpClient>(*config->config);
    return 0;
  } catch (const std::exception&) {
    return 1;
  }
}

void destroyContext(hcyClientContext* context) { delete context; }

}  // namespace hcy
