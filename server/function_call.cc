// SPDX-License-Identifier: Apache-2.0

#include "function_call.h"

#include <cstdint>
#include <new>
#include <string>

#include "function_error.h"
#include "hcy.client.VORTENResult.pb.h"
#include "reply_room.h"
#include "serialized_error.h"
#include "wire/protobuf_version.h"

namespace hcy::server {
namespace {

using client::VORTEN_Params;
using client::VORTEN_Result;

// A few hundredths of a second.
constexpr double kManySteps = 3e7;

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

std::uint8_t* bytesOf(Evaluation& evaluation) {
  return reinterpret_cast<std::uint8_t*>(evaluation.result.data());
}

}  // namespace

FunctionCall::FunctionCall(const Function& function)
    : function_(function), params_(createMessage<VORTEN_Params>(*arena_)) {}

bool FunctionCall::parse(ByteBuffer body) {
  requestSize_ = body.size();
  // Null data of an empty body is fine: no byte of it is read.
  return params_.ParseFromArray(body.data(), static_cast<int>(body.size()));
}

bool FunctionCall::takesLong() const {
  // Of something that is not a number, nothing is known.
  return function_.steps != nullptr && !(function_.steps(params_.rhs()) <= kManySteps);
}

Evaluation FunctionCall::evaluate() try {
  return evaluateFunction();
} catch (const FunctionError& error) {
  return raised(error);
} catch (const std::bad_alloc&) {
  return raised(FunctionError(kServerMemory, "The server has not enough memory for this call."));
}

Evaluation FunctionCall::evaluateFunction() {
  auto& result = createMessage<VORTEN_Result>(*arena_);
  Call call{*params_.mutable_rhs(), *result.mutable_lhs(), params_.nargout(),
            longestReplyTo(requestSize_)};
  checkCounts(function_, call);
  function_.evaluate(call);
  if (call.outputs.size() > call.nargout) {
    call.outputs.DeleteSubrange(call.nargout, call.outputs.size() - call.nargout);
  }
  Evaluation evaluation = withRoomFor(result.ByteSizeLong());
  static_cast<void>(result.SerializeWithCachedSizesToArray(bytesOf(evaluation)));
  evaluation.replyDelay = call.replyDelay;
  return evaluation;
}

Evaluation FunctionCall::raised(const FunctionError& error) const try {
  const SerializedError serialized(error, function_.path);
  Evaluation evaluation = withRoomFor(serialized.size());
  serialized.writeTo(bytesOf(evaluation));
  return evaluation;
} catch (const FunctionError& tooLong) {
  return raised(tooLong);
}

Evaluation FunctionCall::withRoomFor(std::size_t size) const {
  Evaluation evaluation{{}, takeReplyRoom(size, requestSize_)};
  evaluation.result.resizeUninitialized(size);
  return evaluation;
}

}  // namespace hcy::server
