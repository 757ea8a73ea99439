// SPDX-License-Identifier: Apache-2.0

#include "bodies/show.h"

#include <string>

#include "bodies/message_json.h"
#include "bodies/wire_schema.h"
#include "calls/exit_status.h"
#include "output/terminal.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

struct Candidate {
  const char* name;
  MessagePointer message;
  UnknownFields unknown;

  Candidate(const char* kind, MessagePointer made, const std::string& bytes)
      : name(kind), message(std::move(made)) {
    if (message->ParseFromString(bytes)) {
      unknown = unknownFieldsOf(*message);
    } else {
      message.reset();
    }
  }

  // Whether it is made of what a body has. A request and a reply have their first fields, of
  // different types, in different places: one read as the other leaves them unknown.
  bool isLikely() const { return message && (unknown.count == 0 || !unknown.areAll); }
};

const Candidate& chosen(const Candidate& request, const Candidate& reply, Body body, bool isEmpty) {
  if (body != Body::kDetected) {
    const Candidate& wanted = body == Body::kRequest ? request : reply;
    if (wanted.message) return wanted;
    throw BadInput(std::string("this is not the body of a ") + wanted.name +
                   ", or it is cut short");
  }
  if (isEmpty) {
    throw BadInput(
        "the file is empty, as the body of a request or of a reply may be (--request or --reply "
        "tells which)");
  }
  if (!request.isLikely() && !reply.isLikely()) {
    throw BadInput("this is neither the body of a request nor that of a reply, or it is cut short");
  }
  if (!reply.isLikely()) return request;
  return request.isLikely() && request.unknown.count < reply.unknown.count ? request : reply;
}

}  // namespace

std::string jsonOfBody(const std::string& bytes, Body body) {
  const WireSchema schema;
  const Candidate request("request", schema.makeRequest(), bytes);
  const Candidate reply("reply", schema.makeReply(), bytes);
  const Candidate& likely = chosen(request, reply, body, bytes.empty());
  return std::string("{\"") + likely.name + "\": " + toJson(*likely.message) + "}";
}

int show(const Options& options) {
  const std::string bytes = contentsOf(options.file);
  try {
    print(jsonOfBody(bytes, options.body) + "\n");
  } catch (const BadInput& problem) {
    const std::string name = options.file == "-" ? "standard input" : printable(options.file);
    throw BadInput(name + ": " + problem.what());
  }
  return kSuccess;
}

}  // namespace hcy::tools
