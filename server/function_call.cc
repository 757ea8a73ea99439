// SPDX-License-Identifier: Apache-2.0

#include "function_call.h"

#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "field_bytes.h"
#include "function_error.h"
#include "overload.h"
#include "reply_room.h"
#include "serialized_error.h"

namespace hcy::server {
namespace {

// A few hundredths of a second.
constexpr double kManySteps = 3e7;

std::string between(int least, int most) {
  if (most == kAnyNumber) return std::to_string(least) + " or more";
  if (least == most) return std::to_string(least);
  return std::to_string(least) + " to " + std::to_string(most);
}

void checkCounts(const Function& function, const Call& call) {
  const auto nargin = static_cast<int>(call.inputs.size());
  if (nargin < function.minInputs || nargin > function.maxInputs) {
    throw FunctionError(kArgumentCount, function.path + " takes " +
                                            between(function.minInputs, function.maxInputs) +
                                            " arguments, not " + std::to_string(nargin) + ".");
  }
  if (call.nargout < 0 || call.nargout > function.maxOutputs) {
    throw FunctionError(kArgumentCount, function.path + " gives " +
                                            between(0, function.maxOutputs) + " outputs, not " +
                                            std::to_string(call.nargout) + ".");
  }
}

std::uint8_t* bytesOf(Evaluation& evaluation) {
  return reinterpret_cast<std::uint8_t*>(evaluation.result.data());
}

}  // namespace

bool FunctionCall::parse(ByteBuffer body) {
  requestSize_ = body.size();
  bool isBodyNeeded = false;
  const bool isWhole =
      forEachField(bytesOf({body.data(), body.size()}), [&](const WireField& field) {
        if (field.isVarint(kParamsNargout)) nargout_ = static_cast<int>(field.value);
        if (!field.is(kParamsInput)) return true;
        memory_.count(memoryOfValue(field.content));
        std::optional<Value> value = readValue(field.content);
        if (!value) return false;
        isBodyNeeded = isBodyNeeded || !value->array;
        inputs_.push_back(std::move(*value));
        return true;
      });
  if (isBodyNeeded) body_ = std::move(body);
  return isWhole;
}

bool FunctionCall::takesLong() const {
  if (isForeign()) return true;
  // Of something that is not a number, nothing is known.
  return function_.steps && !(function_.steps(inputs_) <= kManySteps);
}

Evaluation FunctionCall::evaluate() try {
  return evaluateFunction();
} catch (const FunctionError& error) {
  return raised(error);
} catch (const Overload&) {
  throw;
} catch (const std::bad_alloc&) {
  return raised(noMemoryForCall());
} catch (const std::exception& error) {
  return raised(FunctionError(kException, error.what(), {StackFrame{}}));
}

Evaluation FunctionCall::evaluateFunction() {
  Call call(inputs_, nargout_, longestReplyTo(requestSize_), memory_);
  checkCounts(function_, call);
  function_.evaluate(call);
  if (std::cmp_greater(call.outputs.size(), nargout_)) {
    call.outputs.erase(call.outputs.begin() + nargout_, call.outputs.end());
  }
  const WrittenResult written(call.outputs);
  Evaluation evaluation = withRoomFor(written.size());
  written.write(bytesOf(evaluation));
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
