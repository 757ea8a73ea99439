// SPDX-License-Identifier: Apache-2.0

#include "bodies/show.h"

#include <google/protobuf/descriptor.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "arguments/argument.h"
#include "bodies/codec.h"
#include "bodies/message_json.h"
#include "bodies/recorded.h"
#include "bodies/wire_schema.h"
#include "notations/array_json.h"
#include "notations/json_list.h"
#include "output/terminal.h"
#include "results/exit_status.h"
#include "results/failure.h"
#include "results/incomplete_output.h"
#include "text/file_replacement.h"
#include "text/source_text.h"
#include "text/text.h"

namespace hcy::tools {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

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

  // Whether a body can consist of these fields. The first fields of a request and of a reply have
  // different numbers and types: if one is read as the other, they are unknown.
  bool isLikely() const { return message && (unknown.count == 0 || !unknown.areAll); }
};

const Candidate& chosen(const Candidate& request, const Candidate& reply, Body body, bool isEmpty) {
  if (body != Body::kDetected) {
    const Candidate& wanted = body == Body::kRequest ? request : reply;
    if (wanted.message) return wanted;
    throw BadInput(std::string("this is not the body of a ") + wanted.name +
                   ", or it is truncated");
  }
  if (isEmpty) {
    throw BadInput(
        "the file is empty; a request and a reply can both be, so use --request or --reply");
  }
  if (!request.isLikely() && !reply.isLikely()) {
    throw BadInput("this is not the body of a request or of a reply, or it is truncated");
  }
  if (!reply.isLikely()) return request;
  return request.isLikely() && request.unknown.count < reply.unknown.count ? request : reply;
}

// A body, read as a request and as a reply.
struct Bodies {
  explicit Bodies(const std::string& bytes)
      : request("request", schema.makeRequest(), bytes),
        reply("reply", schema.makeReply(), bytes) {}

  WireSchema schema;
  Candidate request, reply;
};

const FieldDescriptor& fieldOf(const Message& message, const char* name) {
  return *message.GetDescriptor()->FindFieldByName(name);
}

// A reply whose outputs are the inputs of the request.
std::string replyWith(const WireSchema& schema, const Message& request) {
  const MessagePointer reply = schema.makeReply();
  const FieldDescriptor& inputs = fieldOf(request, "rhs");
  const FieldDescriptor& outputs = fieldOf(*reply, "lhs");
  const int count = request.GetReflection()->FieldSize(request, &inputs);
  for (int i = 0; i < count; ++i) {
    const Message& input = request.GetReflection()->GetRepeatedMessage(request, &inputs, i);
    reply->GetReflection()->AddMessage(reply.get(), &outputs)->CopyFrom(input);
  }
  return reply->SerializeAsString();
}

std::vector<hcyclient::Array> arraysOf(const std::string& reply, int count) {
  const hcyclient::Library library;
  auto arrays = outputsOf(library, reply, count);
  requireWhole(arrays);
  return arrays;
}

}  // namespace

std::string jsonOfBody(const std::string& bytes, Body body) {
  const Bodies bodies(bytes);
  const Candidate& likely = chosen(bodies.request, bodies.reply, body, bytes.empty());
  return std::string("{\"") + likely.name + "\": " + toJson(*likely.message) + "}";
}

std::string arraysOfBody(const std::string& bytes, Body body) {
  const Bodies bodies(bytes);
  const Candidate& likely = chosen(bodies.request, bodies.reply, body, bytes.empty());
  const Message& message = *likely.message;
  const bool isRequest = &likely == &bodies.request;
  const int count =
      message.GetReflection()->FieldSize(message, &fieldOf(message, isRequest ? "rhs" : "lhs"));
  if (isRequest) return jsonList(arraysOf(replyWith(bodies.schema, message), count));
  std::string lines;
  for (const hcyclient::Array& output : arraysOf(bytes, count)) lines += toJson(output) + "\n";
  return lines;
}

int nargoutOf(const std::string& request) {
  const Bodies bodies(request);
  const Message& message = *chosen(bodies.request, bodies.reply, Body::kRequest, false).message;
  return message.GetReflection()->GetInt32(message, &fieldOf(message, "nargout"));
}

int show(const Options& options) {
  const std::string bytes = contentsOf(options.file);
  try {
    if (isRecordedCall(bytes)) {
      print(textOfRecordedCall(bytes, options.body, options.showsSchema));
    } else {
      print(options.showsSchema ? jsonOfBody(bytes, options.body) + "\n"
                                : arraysOfBody(bytes, options.body));
    }
  } catch (const hcyclient::FunctionError&) {
    print(failureText(currentFailure()));
  } catch (const BadInput& problem) {
    const std::string name = options.file == "-" ? "standard input" : printable(options.file);
    throw BadInput(name + ": " + problem.what());
  }
  return kSuccess;
}

int encode(const Options& options) {
  if (options.output.files.empty() && isTerminal(STDOUT_FILENO)) {
    throw BadInput("the body is binary; write it to a file with --output FILE or > FILE");
  }
  const auto inputs = arraysFrom(options.arguments, options.argumentSettings);
  const hcyclient::Library library;
  const std::string body = requestOf(library, inputs, options.nargout).body;
  if (options.output.files.empty() || isStandardOutput(options.output.files.front())) {
    print(body);
  } else {
    writeFile(options.output.files.front(), body);
  }
  return kSuccess;
}

}  // namespace hcy::tools
