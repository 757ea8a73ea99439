// SPDX-License-Identifier: Apache-2.0
//
// Arrays of doubles as matrices of Eigen, in their own storage.

#pragma once

#include <Eigen/Core>
#include <string>

#include "function_table.h"
#include "value.h"

namespace hcy::server {

using MatrixView = Eigen::Map<Eigen::MatrixXd>;
using VectorView = Eigen::Map<Eigen::VectorXd>;

// A real argument of two dimensions; raises a FunctionError if it is something else.
MatrixView matrixArgument(Value& value, const std::string& name);
// A row or a column.
VectorView vectorArgument(Value& value, const std::string& name);
void requireFinite(const MatrixView& matrix, const std::string& name);

// A new output, all zero.
MatrixView addMatrix(Call& call, Eigen::Index rows, Eigen::Index columns);

}  // namespace hcy::server
