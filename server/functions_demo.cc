// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "functions.h"

namespace hcy::server {
namespace {

constexpr double kMostFrames = 1'000'000;
constexpr double kLongestSleep = 3600;

int depthArgument(Array& array) {
  const double depth = realScalar(array, "depth");
  if (!(depth >= 0 && depth <= kMostFrames) || depth != std::floor(depth)) {
    throw FunctionError(kArgumentValue, "depth is no whole number from 0 to 1000000.");
  }
  return static_cast<int>(depth);
}

}  // namespace

void demoFail(Call& call) {
  const std::string identifier = utf8Text(call.inputs[0], "identifier");
  const std::string message = utf8Text(call.inputs[1], "message");
  const int depth = call.inputs.size() > 2 ? depthArgument(call.inputs[2]) : 1;
  std::vector<StackFrame> stack;
  stack.reserve(static_cast<std::size_t>(depth));
  for (int frame = 1; frame <= depth; ++frame) {
    const std::string number = std::to_string(frame);
    stack.push_back({"demo/fail_" + number, "fail_" + number, frame});
  }
  throw FunctionError(identifier, message, std::move(stack));
}

void demoSleep(Call& call) {
  const double seconds = realScalar(call.inputs[0], "seconds");
  if (!(seconds >= 0 && seconds <= kLongestSleep)) {
    throw FunctionError(kArgumentValue, "seconds is not from 0 to 3600.");
  }
  call.replyDelay =
      std::chrono::ceil<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
  call.outputs.Swap(&call.inputs);
}

}  // namespace hcy::server
