// SPDX-License-Identifier: Apache-2.0

#include "function_call.h"

#include <google/protobuf/arena.h>

#include <cstdint>
#include <limits>
#include <new>
#include <string>

#include "function_error.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "message_memory.h"

namespace hcy::server {
namespace {

using client::VORTEN_Error;
using client::VORTEN_Params;
using client::VORTEN_Result;

std::string between(int least, int most) {
  if (most == kAnyNumber) return std::to_string(least) + " or more";
  if (least == most) return std::to_string(least);
  return std::to_string(least) + " to " + std::to_string(most);
}

void checkCounts(const Function& function, const Call& call) {
  const int nargin = call.inputs.size();
  if (nargin < function.minInputs || nargin > function.maxInputs) {
    throw FunctionError(kArgumentCount, std::string(function.path) + " takes " +
                                            between(function.minInputs, function.maxInputs) +
                                            " arguments, not " + std::to_string(nargin) + ".");
  }
  if (call.nargout < 0 || call.nargout > function.maxOutputs) {
    throw FunctionError(kArgumentCount, std::string(function.path) + " gives " +
                                            between(0, function.maxOutputs) + " outputs, not " +
                                            std::to_string(call.nargout) + ".");
  }
}

ByteBuffer serialized(const VORTEN_Result& result) {
  const std::size_t size = result.ByteSizeLong();
  if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw FunctionError(kResultSize, "The outputs take more than 2147483647 bytes.");
  }
  ByteBuffer bytes;
  bytes.resizeUninitialized(size);
  result.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

ByteBuffer serializedError(const Function& function, const FunctionError& error) {
  google::protobuf::Arena arena;
  auto& result = *google::protobuf::Arena::CreateMessage<VORTEN_Result>(&arena);
  VORTEN_Error& message = *result.mutable_error();
  message.set_message(error.what());
  message.set_identifier(error.identifier());
  for (const StackFrame& frame : error.stack()) {
    VORTEN_Error::Stack_Frame& added = *message.add_stack();
    added.set_file(frame.file);
    added.set_name(frame.name.empty() ? std::string(function.path) : frame.name);
    added.set_line(frame.line);
  }
  return serialized(result);
}

Evaluation callFunction(const Function& function, VORTEN_Params& params) try {
  auto& result = *google::protobuf::Arena::CreateMessage<VORTEN_Result>(params.GetArena());
  Call call{*params.mutable_rhs(), *result.mutable_lhs(), params.nargout()};
  checkCounts(function, call);
  function.evaluate(call);
  if (call.outputs.size() > call.nargout) {
    call.outputs.DeleteSubrange(call.nargout, call.outputs.size() - call.nargout);
  }
  return {serialized(result), call.replyDelay};
} catch (const FunctionError& error) {
  return {serializedError(function, error)};
} catch (const std::bad_alloc&) {
  return {serializedError(
      function, FunctionError(kServerMemory, "The server has not enough memory for this call."))};
}

}  // namespace

std::optional<Evaluation> evaluate(const Function& function, ByteBuffer body) {
  google::protobuf::Arena arena(boundedArena());
  auto& params = *google::protobuf::Arena::CreateMessage<VORTEN_Params>(&arena);
  // Null data of an empty body is fine: no byte of it is read.
  if (!params.ParseFromArray(body.data(), static_cast<int>(body.size()))) return std::nullopt;
  body = ByteBuffer();
  return callFunction(function, params);
}

}  // namespace hcy::server
