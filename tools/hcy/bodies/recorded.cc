// SPDX-License-Identifier: Apache-2.0

#include "bodies/recorded.h"

#include <hcy/hcyclient.hpp>
#include <stdexcept>

#include "bodies/show.h"
#include "results/failure.h"
#include "server/recorded_header.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

struct RecordedBodies {
  server::RecordedCall call;
  std::string request, reply;
};

RecordedBodies bodiesIn(const std::string& bytes) {
  RecordedBodies bodies;
  try {
    bodies.call = server::recordedCallFrom(bytes);
  } catch (const std::runtime_error& error) {
    throw BadInput(std::string("this ") + error.what());
  }
  const std::size_t begin = bodies.call.headerSize;
  const std::size_t requestSize = bodies.call.requestSize;
  const std::size_t size = bytes.size() - begin;
  if (requestSize > size || size - requestSize != bodies.call.replySize) {
    throw BadInput("this file is truncated, or its bodies have been changed");
  }
  bodies.request = bytes.substr(begin, requestSize);
  bodies.reply = bytes.substr(begin + requestSize);
  return bodies;
}

std::string sizeOf(const std::string& body) { return std::to_string(body.size()) + " bytes"; }

std::string requestText(const std::string& request) try {
  return "request: " + arraysOfBody(request, Body::kRequest) +
         "nargout: " + std::to_string(nargoutOf(request)) + "\n";
} catch (const BadInput&) {
  return "request: " + sizeOf(request) + " that are not the body of a request\n";
}

// A reply that is not the result of a function.
std::string otherReplyText(const std::string& reply, std::string_view type,
                           std::string_view encoding) {
  std::string text = "reply: " + sizeOf(reply);
  if (!type.empty()) text += " of " + printable(type);
  if (!encoding.empty()) return text + ", encoded as " + printable(encoding) + "\n";
  if (!type.starts_with("text/") || reply.empty()) return text + "\n";
  const std::size_t end = reply.find_last_not_of("\r\n") + 1;
  return text + "\n  " + printableLines(std::string_view(reply).substr(0, end), 2) + "\n";
}

std::string replyText(const server::RecordedCall& call, const std::string& reply) {
  const std::string_view type = server::valueOf(call.fields, "Content-Type");
  const std::string_view encoding = server::valueOf(call.fields, "Content-Encoding");
  if (call.status != 200 || !encoding.empty() || type.starts_with("text/")) {
    return otherReplyText(reply, type, encoding);
  }
  try {
    return "reply:\n" + arraysOfBody(reply, Body::kReply);
  } catch (const hcyclient::FunctionError&) {
    return "reply:\n" + failureText(currentFailure());
  } catch (const BadInput&) {
    return "reply: " + sizeOf(reply) + " that are not the body of a reply\n";
  }
}

}  // namespace

bool isRecordedCall(std::string_view bytes) {
  // In a body, this would begin a group of field 15, which no message has.
  return bytes.starts_with('{');
}

std::string textOfRecordedCall(const std::string& bytes, Body body, bool showsSchema) {
  const auto& [call, request, reply] = bodiesIn(bytes);
  const auto textOf = [showsSchema](const std::string& one, Body kind) {
    return showsSchema ? jsonOfBody(one, kind) + "\n" : arraysOfBody(one, kind);
  };
  if (body != Body::kDetected) return textOf(body == Body::kRequest ? request : reply, body);
  if (showsSchema) return textOf(request, Body::kRequest) + textOf(reply, Body::kReply);
  return "path: " + printable(call.path) + "\nstatus: " + std::to_string(call.status) + " " +
         printable(call.reason) + "\n" + requestText(request) + replyText(call, reply);
}

}  // namespace hcy::tools
