// SPDX-License-Identifier: Apache-2.0

#include "matrices.h"

#include "arguments.h"
#include "function_error.h"

namespace hcy::server {

MatrixView matrixArgument(Value& value, const std::string& name) {
  const DoubleElements elements = doubleElements(value, name);
  if (!elements.imaginary.empty()) throw FunctionError(kArgumentValue, name + " is complex.");
  const Shape shape = shapeOf(value, name);
  if (shape.size() != 2) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", not a matrix.");
  }
  return {elements.real.data(), static_cast<Eigen::Index>(shape[0]),
          static_cast<Eigen::Index>(shape[1])};
}

VectorView vectorArgument(Value& value, const std::string& name) {
  MatrixView matrix = matrixArgument(value, name);
  if (matrix.rows() != 1 && matrix.cols() != 1) {
    throw FunctionError(kArgumentSize, name + " is neither a row nor a column.");
  }
  return {matrix.data(), matrix.size()};
}

void requireFinite(const MatrixView& matrix, const std::string& name) {
  if (!matrix.allFinite()) {
    throw FunctionError(kArgumentValue, name + " holds an element that is not finite.");
  }
}

MatrixView addMatrix(Call& call, Eigen::Index rows, Eigen::Index columns) {
  Array& array = call.addDoubles(static_cast<std::size_t>(rows), static_cast<std::size_t>(columns));
  return {array.span<double>().data(), rows, columns};
}

}  // namespace hcy::server
