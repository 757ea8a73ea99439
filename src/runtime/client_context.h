// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "hcy.client.VORTENError.pb.h"
#include "hcy/hcyclient.h"
#include "http/body_block.h"
#include "http/client.h"

// What the runtime table calls a context: a client, and the record of its last failed call.
// Recording a failure rewrites the kind, the message and the members of that kind; the others
// keep what an earlier failure left.
struct hcyClientContext {
  std::unique_ptr<hcy::QXClient> client;  // null when it could not be made
  hcy::SpareBlock spareRequest;

  hcyErrorType errorKind = HCY_HTTP_ERROR;
  const char* errorMessage = "";  // the fixed text of the kind; empty before the first failure
  std::string errorDetails;
  std::uint32_t httpStatus = 0;
  std::string httpStatusMessage;
  hcy::client::VORTEN_Error vortenError;

  void setHttpError(const hcy::Response& response);
  void setVortenError(hcy::client::VORTEN_Error&& error);
  void setGenericError(const std::exception& exception) noexcept;
};

namespace hcy {

// Operations of the runtime table.
int createContext(hcyClientContext** context, const hcyClientConfig* config);
void destroyContext(hcyClientContext* context);

}  // namespace hcy
