// SPDX-License-Identifier: Apache-2.0

#include "matrix_values.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "array_values.h"
#include "function_error.h"

namespace hcy::server {

MatrixView matrixArgument(Array& array, const std::string& name) {
  Doubles& elements = realElements(array, name);
  const std::vector<std::uint64_t> shape = shapeOf(array, name);
  if (shape.size() != 2) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", no matrix.");
  }
  // Only beside a zero can an extent be larger than the number of elements.
  constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<int>::max());
  if (shape[0] > most || shape[1] > most) {
    throw FunctionError(kArgumentSize, name + " is " + describeShape(shape) + ", too large.");
  }
  return {elements.mutable_data(), static_cast<Eigen::Index>(shape[0]),
          static_cast<Eigen::Index>(shape[1])};
}

VectorView vectorArgument(Array& array, const std::string& name) {
  const MatrixView matrix = matrixArgument(array, name);
  if (matrix.rows() != 1 && matrix.cols() != 1) {
    throw FunctionError(kArgumentSize, name + " is neither a row nor a column.");
  }
  return {array.mutable_qxdouble()->mutable_elements()->mutable_data(), matrix.size()};
}

void requireFinite(const MatrixView& matrix, const std::string& name) {
  if (!matrix.allFinite()) {
    throw FunctionError(kArgumentValue, name + " holds an element that is not finite.");
  }
}

MatrixView makeMatrix(Array& array, Eigen::Index rows, Eigen::Index columns) {
  Doubles& elements =
      makeDoubles(array, {static_cast<std::size_t>(rows), static_cast<std::size_t>(columns)});
  return {elements.mutable_data(), rows, columns};
}

}  // namespace hcy::server
