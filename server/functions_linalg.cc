// SPDX-License-Identifier: Apache-2.0

#include <Eigen/LU>
#include <Eigen/SVD>
#include <algorithm>
#include <limits>
#include <vector>

#include "arguments.h"
#include "function_error.h"
#include "functions.h"
#include "matrices.h"

namespace hcy::server {
namespace {

constexpr char kNoConvergence[] = "halcyon:matrix:convergence";

// With the factors that the bits name. Eigen has them in the type from 5 on, where giving them to
// the constructor is deprecated.
template <int kFactors>
auto decompositionOf(const MatrixView& a) {
#if EIGEN_MAJOR_VERSION >= 5
  return Eigen::BDCSVD<Eigen::MatrixXd, kFactors>(a);
#else
  return Eigen::BDCSVD<Eigen::MatrixXd>(a, kFactors);
#endif
}

template <class Decomposition>
void requireConvergence(const Decomposition& svd) {
  if (svd.info() == Eigen::Success) return;
  throw FunctionError(kNoConvergence, "The singular values of A were not found.");
}

// The factors of an m-by-n matrix with k = min(m, n): U is m-by-k and V is n-by-k, so that no
// output is ever larger than the argument.
void putFactors(Call& call, const MatrixView& a) {
  const auto svd = decompositionOf<Eigen::ComputeThinU | Eigen::ComputeThinV>(a);
  requireConvergence(svd);
  addMatrix(call, svd.matrixU().rows(), svd.matrixU().cols()) = svd.matrixU();
  const Eigen::VectorXd& values = svd.singularValues();
  addMatrix(call, values.size(), values.size()).diagonal() = values;
  if (call.nargout > 2) {
    addMatrix(call, svd.matrixV().rows(), svd.matrixV().cols()) = svd.matrixV();
  }
}

void putSingularValues(Call& call, const MatrixView& a) {
  const auto svd = decompositionOf<0>(a);
  requireConvergence(svd);
  addMatrix(call, svd.singularValues().size(), 1) = svd.singularValues();
}

// Eigen decomposes no empty matrix.
void putEmptyFactors(Call& call, Eigen::Index rows, Eigen::Index columns) {
  if (call.nargout < 2) {
    addMatrix(call, 0, 1);
    return;
  }
  addMatrix(call, rows, 0);
  addMatrix(call, 0, 0);
  addMatrix(call, columns, 0);
}

}  // namespace

// In proportion to the product of A's extents and the smaller one of them.
double linalgSteps(const std::vector<Value>& inputs) {
  if (inputs.empty() || !inputs[0].array) return 0;
  const auto rows = static_cast<double>(inputs[0].array.rows());
  const auto columns = static_cast<double>(inputs[0].array.columns());
  const double ofA = rows * columns * std::min(rows, columns);
  if (inputs.size() < 2 || !inputs[1].array) return ofA;
  // Solving goes through the rest once more for each column of B.
  return ofA + rows * rows * static_cast<double>(inputs[1].array.columns());
}

void linalgSolve(Call& call) {
  MatrixView a = matrixArgument(call.inputs[0], "A");
  const MatrixView b = matrixArgument(call.inputs[1], "B");
  if (a.rows() != a.cols()) throw FunctionError(kArgumentSize, "A is not square.");
  if (a.rows() != b.rows()) {
    throw FunctionError(kArgumentSize, "A is " + describeShape(shapeOf(call.inputs[0], "A")) +
                                           ", but B is " +
                                           describeShape(shapeOf(call.inputs[1], "B")) + ".");
  }
  requireFinite(a, "A");
  MatrixView x = addMatrix(call, b.rows(), b.cols());
  if (x.size() == 0) return;
  // The factors overwrite the argument.
  const Eigen::PartialPivLU<Eigen::Ref<Eigen::MatrixXd>> lu(a);
  if (!(lu.rcond() > std::numeric_limits<double>::epsilon())) {
    throw FunctionError(kMatrixSingular, "A is singular to working precision.");
  }
  x = lu.solve(b);
}

void linalgSvd(Call& call) {
  const MatrixView a = matrixArgument(call.inputs[0], "A");
  requireFinite(a, "A");
  if (a.size() == 0) return putEmptyFactors(call, a.rows(), a.cols());
  if (call.nargout > 1) return putFactors(call, a);
  putSingularValues(call, a);
}

}  // namespace hcy::server
