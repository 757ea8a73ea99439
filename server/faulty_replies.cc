// SPDX-License-Identifier: Apache-2.0

#include "faulty_replies.h"

#include <boost/beast/http/field.hpp>
#include <string>
#include <utility>

#include "function_error.h"
#include "recorded_call.h"
#include "serialized_error.h"

namespace hcy::server {
namespace {

namespace http = boost::beast::http;

// As a gateway shows it that has lost the server behind it.
constexpr std::string_view kGatewayPage =
    "<!DOCTYPE html>\n<html><head><title>Gateway</title></head>\n"
    "<body><h1>The service is not available</h1></body></html>\n";

Reply replyWith(unsigned status, const std::string& reason, const std::string& contentType,
                ByteBuffer body) {
  RecordedCall call;
  call.status = status;
  call.reason = reason;
  if (!contentType.empty()) call.fields.push_back({"Content-Type", contentType});
  return {asRecorded(call, std::move(body))};
}

Reply statusReply(const Fault& fault) {
  Reply reply = replyWith(
      fault.status, std::string(http::obsolete_reason(static_cast<http::status>(fault.status))),
      "text/plain; charset=utf-8", ByteBuffer("This failure was requested: " + fault.text + "\n"));
  if (fault.status == 401) {
    reply.message.set(http::field::www_authenticate, "Basic realm=\"hcy-local-server\"");
  }
  return reply;
}

Reply errorReply(const Fault& fault, const HttpRequest& request) {
  const FunctionError error(fault.identifier, fault.message, "--fault", 0);
  return resultReply(serialized(error, pathOf(request).substr(1)), Source::kServer);
}

std::optional<Reply> replyOf(const Fault& fault, const HttpRequest& request) {
  switch (fault.kind) {
    case Fault::Kind::kStatus:
      return statusReply(fault);
    case Fault::Kind::kHtml:
      return replyWith(200, "OK", "text/html; charset=utf-8", ByteBuffer(kGatewayPage));
    case Fault::Kind::kError:
      return errorReply(fault, request);
    case Fault::Kind::kReset:
    case Fault::Kind::kClose: {
      Reply reply = replyWith(503, "", "", ByteBuffer());
      reply.delivery.way =
          fault.kind == Fault::Kind::kReset ? Delivery::Way::kReset : Delivery::Way::kClosed;
      return reply;
    }
    case Fault::Kind::kDelay:
    case Fault::Kind::kTruncate:
    case Fault::Kind::kDrip:
      break;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Reply> replyInstead(const ScheduledFault& scheduled, const HttpRequest& request) {
  if (scheduled.fault == nullptr) return std::nullopt;
  return replyOf(*scheduled.fault, request);
}

void disturb(Reply& reply, const ScheduledFault& scheduled) {
  reply.delay += scheduled.delay;
  reply.fault = scheduled.text;
  if (scheduled.fault == nullptr) return;
  if (scheduled.fault->kind == Fault::Kind::kTruncate) {
    reply.delivery.way = Delivery::Way::kTruncated;
    reply.delivery.bytes = scheduled.fault->bytes;
  } else if (scheduled.fault->kind == Fault::Kind::kDrip) {
    reply.delivery.way = Delivery::Way::kDripped;
    reply.delivery.bytesPerSecond = scheduled.fault->bytesPerSecond;
  }
}

}  // namespace hcy::server
