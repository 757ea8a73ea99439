// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <vector>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"
#include "matrices.h"

namespace hcy::server {

// Each value of A, and each row of the result, is met once for each column of B.
double sparseMultiplySteps(const std::vector<Value>& inputs) {
  if (inputs.size() < 2 || !inputs[0].array || !inputs[1].array) return 0;
  const Array& a = inputs[0].array;
  if (!a.isSparse()) return 0;
  return static_cast<double>(a.rows() + a.columns() + hcyGetNzmax(a.get())) *
         static_cast<double>(inputs[1].array.columns());
}

void sparseMultiply(Call& call) {
  const Array& a = sparseArgument(call.inputs[0], "A");
  const MatrixView b = matrixArgument(call.inputs[1], "B");
  if (a.columns() != static_cast<std::size_t>(b.rows())) {
    throw FunctionError(kArgumentSize, "A has not as many columns as B has rows.");
  }
  const Shape shape{a.rows(), static_cast<std::size_t>(b.cols())};
  // Zeros that are too long for any reply are not worth making.
  if (static_cast<double>(shape[0]) * static_cast<double>(shape[1]) >
      static_cast<double>(call.longestReply / sizeof(double))) {
    throw FunctionError(kResultSize, "The result is " + describeShape(shape) + ", too large.");
  }
  double* product = call.addDoubles(shape[0], shape[1]).span<double>().data();
  // The stored elements of column j are those from starts[j] to starts[j + 1].
  const auto starts = a.columnStarts();
  const auto rowOf = a.rowIndices();
  const auto values = a.span<double>();
  for (Eigen::Index k = 0; k < b.cols(); ++k, product += a.rows()) {
    for (std::size_t j = 0; j < a.columns(); ++j) {
      for (std::size_t i = starts[j]; i < starts[j + 1]; ++i) {
        product[rowOf[i]] += values[i] * b(static_cast<Eigen::Index>(j), k);
      }
    }
  }
}

}  // namespace hcy::server
