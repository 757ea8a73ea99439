// SPDX-License-Identifier: Apache-2.0

#include "runtime/error_info.h"

#include <cstdlib>

#include "runtime/client_context.h"

namespace hcy {
namespace {

using client::VORTEN_Error;

// The frames of an error, for free(); null if there are none or memory runs out.
hcyErrorStackFrame* stackOf(const VORTEN_Error& error) {
  if (error.stack().empty()) return nullptr;
  auto* const frames = static_cast<hcyErrorStackFrame*>(
      std::calloc(static_cast<std::size_t>(error.stack_size()), sizeof(hcyErrorStackFrame)));
  if (frames == nullptr) return nullptr;
  hcyErrorStackFrame* next = frames;
  for (const VORTEN_Error::Stack_Frame& frame : error.stack()) {
    *next++ = {frame.file().c_str(), frame.name().c_str(), frame.line()};
  }
  return frames;
}

}  // namespace

void getLastErrorInfo(const hcyClientContext* context, hcyErrorInfo* info) {
  info->kind = context->errorKind;
  info->message = context->errorMessage;
  const VORTEN_Error& error = context->vortenError;
  switch (context->errorKind) {
    case HCY_HTTP_ERROR:
      info->details.http = {context->httpStatus, context->httpStatusMessage.c_str()};
      break;
    case HCY_VORTEN_ERROR:
      info->details.vorten = {error.message().c_str(), error.identifier().c_str(), stackOf(error),
                              static_cast<std::size_t>(error.stack_size())};
      break;
    case HCY_GENERIC_ERROR:
      info->details.generic = {context->errorDetails.c_str()};
      break;
    default:
      break;
  }
}

void destroyLastErrorInfo(hcyErrorInfo* info) {
  if (info->kind != HCY_VORTEN_ERROR || info->details.vorten.stackDepth == 0) return;
  std::free(info->details.vorten.stack);
  info->details.vorten.stack = nullptr;
}

}  // namespace hcy
