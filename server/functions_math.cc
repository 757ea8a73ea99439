// SPDX-License-Identifier: Apache-2.0

#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "functions.h"
#include "wire/protobuf_version.h"

namespace hcy::server {
namespace {

// Adds to each element of `sum` its counterpart of `terms`, or the only one.
void add(Doubles& sum, const Doubles& terms) {
  const bool scalar = terms.size() == 1;
  double* sums = sum.mutable_data();
  const double* term = terms.data();
  for (int i = 0; i < sum.size(); ++i) sums[i] += scalar ? *term : term[i];
}

}  // namespace

void echo(Call& call) {
  if (call.nargout > call.inputs.size()) {
    throw FunctionError(kArgumentCount,
                        "echo cannot give more outputs than it is given arguments.");
  }
  call.outputs.Swap(&call.inputs);
}

void mathPlus(Call& call) {
  const DoubleElements first = doubleElements(call.inputs[0], "A");
  const DoubleElements second = doubleElements(call.inputs[1], "B");
  const auto firstShape = shapeOf(call.inputs[0], "A");
  const auto secondShape = shapeOf(call.inputs[1], "B");
  if (first.real.size() != 1 && second.real.size() != 1 && firstShape != secondShape) {
    throw FunctionError(kArgumentSize, "A is " + describeShape(firstShape) + ", but B is " +
                                           describeShape(secondShape) + ".");
  }
  // The sum takes the place of the argument that has its shape.
  const bool intoSecond = first.real.size() == 1;
  const DoubleElements& sum = intoSecond ? second : first;
  const DoubleElements& terms = intoSecond ? first : second;
  add(sum.real, terms.real);
  if (!terms.imaginary.empty()) {
    resizeList(sum.imaginary, sum.real.size());
    add(sum.imaginary, terms.imaginary);
  }
  call.inputs[intoSecond ? 1 : 0].clear_iscomplex();
  call.outputs.Add()->Swap(&call.inputs[intoSecond ? 1 : 0]);
}

}  // namespace hcy::server
