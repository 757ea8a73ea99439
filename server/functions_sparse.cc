// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "functions.h"
#include "matrix_values.h"

namespace hcy::server {
namespace {

using client::VORTEN_Array;

// Compressed columns: the stored elements of column j are those from starts[j] to starts[j + 1].
struct SparseView {
  std::uint64_t rows, columns;
  const google::protobuf::RepeatedField<std::uint64_t>& starts;
  const google::protobuf::RepeatedField<std::uint64_t>& rowOf;
  const Doubles& values;
};

void checkStarts(const SparseView& a) {
  if (a.starts.empty() || static_cast<std::uint64_t>(a.starts.size() - 1) != a.columns) {
    throw FunctionError(kArgumentSize, "A does not hold one column start more than columns.");
  }
  if (a.rowOf.size() != a.values.size()) {
    throw FunctionError(kArgumentSize, "A does not hold one row for each value.");
  }
  if (a.starts[0] != 0 ||
      a.starts[a.starts.size() - 1] != static_cast<std::uint64_t>(a.values.size())) {
    throw FunctionError(kArgumentValue, "The column starts of A do not span its values.");
  }
  for (int j = 1; j < a.starts.size(); ++j) {
    if (a.starts[j - 1] > a.starts[j]) {
      throw FunctionError(kArgumentValue, "The column starts of A are not in order.");
    }
  }
}

// The column starts have been checked.
void checkRows(const SparseView& a) {
  for (int j = 0; j + 1 < a.starts.size(); ++j) {
    const auto first = static_cast<int>(a.starts[j]), end = static_cast<int>(a.starts[j + 1]);
    for (int i = first; i < end; ++i) {
      if (a.rowOf[i] >= a.rows) {
        throw FunctionError(kArgumentValue, "A has an element outside its rows.");
      }
      if (i > first && a.rowOf[i - 1] >= a.rowOf[i]) {
        throw FunctionError(kArgumentValue, "The rows of a column of A are not in order.");
      }
    }
  }
}

SparseView sparseArgument(Array& array, const std::string& name) {
  requireClass(array, VORTEN_Array::SPARSE, name);
  const std::vector<std::uint64_t> shape = shapeOf(array, name);
  if (shape.size() != 2) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", no matrix.");
  }
  VORTEN_Array::Sparse& sparse = *array.mutable_sparse();
  if (sparse.type() != VORTEN_Array::Sparse::DOUBLE) {
    throw FunctionError(kArgumentClass, name + " does not hold doubles.");
  }
  VORTEN_Array::Double& values = *sparse.mutable_qxsparsedouble();
  if (values.imag_elements_size() > 0) {
    throw FunctionError(kArgumentValue, name + " is complex.");
  }
  const SparseView a{shape[0], shape[1], sparse.jc(), sparse.ir(), values.elements()};
  checkStarts(a);
  checkRows(a);
  return a;
}

}  // namespace

// Each value of A, and each row of the result, is met once for each column of B.
double sparseMultiplySteps(const Arrays& inputs) {
  if (inputs.size() < 2 || inputs[0].dimension_size() < 2 || inputs[1].dimension_size() < 2)
    return 0;
  const VORTEN_Array::Sparse& a = inputs[0].sparse();
  return (static_cast<double>(inputs[0].dimension(0)) + a.ir_size() + a.jc_size()) *
         static_cast<double>(inputs[1].dimension(1));
}

void sparseMultiply(Call& call) {
  const SparseView a = sparseArgument(call.inputs[0], "A");
  const MatrixView b = matrixArgument(call.inputs[1], "B");
  if (a.columns != static_cast<std::uint64_t>(b.rows())) {
    throw FunctionError(kArgumentSize, "A has not as many columns as B has rows.");
  }
  const std::vector<std::uint64_t> shape{a.rows, static_cast<std::uint64_t>(b.cols())};
  // Zeros that are too long for any reply are not worth making.
  if (elementCount(shape, "The result") > call.longestReply / sizeof(double)) {
    throw FunctionError(kResultSize, "The result is " + describeShape(shape) + ", too large.");
  }
  double* product =
      makeDoubles(*call.outputs.Add(), {a.rows, static_cast<std::size_t>(b.cols())}).mutable_data();
  for (Eigen::Index k = 0; k < b.cols(); ++k, product += a.rows) {
    for (int j = 0; j + 1 < a.starts.size(); ++j) {
      const auto end = static_cast<int>(a.starts[j + 1]);
      for (auto i = static_cast<int>(a.starts[j]); i < end; ++i) {
        product[a.rowOf[i]] += a.values[i] * b(j, k);
      }
    }
  }
}

}  // namespace hcy::server
