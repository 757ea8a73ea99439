// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"

namespace hcy::server {
namespace {

constexpr double kMostFrames = 1'000'000;
constexpr double kLongestSleep = 3600;

int depthArgument(Value& value) {
  const double depth = realScalar(value, "depth");
  if (!(depth >= 0 && depth <= kMostFrames) || depth != std::floor(depth)) {
    throw FunctionError(kArgumentValue, "depth is not a whole number from 0 to 1000000.");
  }
  return static_cast<int>(depth);
}

StackFrame frameAt(int index) {
  const std::string number = std::to_string(index + 1);
  return {"demo/fail_" + number, "fail_" + number, index + 1};
}

}  // namespace

double demoFailSteps(const std::vector<Value>& inputs) {
  constexpr double kStepsOfOneFrame = 500;
  if (inputs.size() < 3 || !inputs[2].array) return 0;
  const hcyArray* const depth = inputs[2].array.get();
  return hcyIsDouble(depth) && hcyGetNumberOfElements(depth) == 1
             ? hcyGetScalar(depth) * kStepsOfOneFrame
             : 0;
}

void demoFail(Call& call) {
  const std::string identifier = utf8Text(call.inputs[0], "identifier");
  const std::string message = utf8Text(call.inputs[1], "message");
  const int depth = call.inputs.size() > 2 ? depthArgument(call.inputs[2]) : 1;
  throw FunctionError(identifier, message, depth, frameAt);
}

void demoSleep(Call& call) {
  const double seconds = realScalar(call.inputs[0], "seconds");
  if (!(seconds >= 0 && seconds <= kLongestSleep)) {
    throw FunctionError(kArgumentValue, "seconds is not from 0 to 3600.");
  }
  call.replyDelay =
      std::chrono::ceil<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
  call.add(Array(seconds));
}

}  // namespace hcy::server
