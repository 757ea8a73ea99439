// SPDX-License-Identifier: Apache-2.0
//
// Arrays of doubles seen as Eigen's matrices, in place.

#pragma once

#include <Eigen/Core>
#include <string>

#include "function_table.h"

namespace hcy::server {

using MatrixView = Eigen::Map<Eigen::MatrixXd>;
using VectorView = Eigen::Map<Eigen::VectorXd>;

// A real argument of two dimensions.
MatrixView matrixArgument(Array& array, const std::string& name);
// A row or a column.
VectorView vectorArgument(Array& array, const std::string& name);
void requireFinite(const MatrixView& matrix, const std::string& name);

// A new output, all zero.
MatrixView makeMatrix(Array& array, Eigen::Index rows, Eigen::Index columns);

}  // namespace hcy::server
