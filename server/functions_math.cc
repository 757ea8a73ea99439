// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <complex>
#include <cstddef>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"

namespace hcy::server {
namespace {

// Adds to each element of `sum` its counterpart of `terms`, or the only one.
void add(Span<double> sum, Span<double> terms) {
  const bool isScalar = terms.size() == 1;
  for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += terms[isScalar ? 0 : i];
}

}  // namespace

void echo(Call& call) {
  if (call.nargout > static_cast<int>(call.inputs.size())) {
    throw FunctionError(kArgumentCount,
                        "echo cannot give more outputs than it is given arguments.");
  }
  call.outputs.swap(call.inputs);
}

void mathPlus(Call& call) {
  const DoubleElements first = doubleElements(call.inputs[0], "A");
  const DoubleElements second = doubleElements(call.inputs[1], "B");
  const Shape firstShape = shapeOf(call.inputs[0], "A");
  const Shape secondShape = shapeOf(call.inputs[1], "B");
  if (first.real.size() != 1 && second.real.size() != 1 && firstShape != secondShape) {
    throw FunctionError(kArgumentSize, "A is " + describeShape(firstShape) + ", but B is " +
                                           describeShape(secondShape) + ".");
  }
  // The sum has the shape of the argument that is not a scalar.
  const bool isLikeSecond = first.real.size() == 1;
  const DoubleElements& base = isLikeSecond ? second : first;
  const DoubleElements& terms = isLikeSecond ? first : second;
  const Shape& shape = isLikeSecond ? secondShape : firstShape;
  const bool isComplex = !first.imaginary.empty() || !second.imaginary.empty();
  call.count(kArrayMemory + (isComplex ? 2 : 1) * sizeof(double) * base.real.size());
  Array& sum =
      call.add(isComplex ? Array::zeros<std::complex<double>>(shape) : Array::zeros<double>(shape));
  const Span<double> real = sum.span<double>();
  std::copy(base.real.begin(), base.real.end(), real.begin());
  add(real, terms.real);
  if (!isComplex) return;
  const Span<double> imaginary = sum.imaginary<double>();
  std::copy(base.imaginary.begin(), base.imaginary.end(), imaginary.begin());
  if (!terms.imaginary.empty()) add(imaginary, terms.imaginary);
}

}  // namespace hcy::server
