// SPDX-License-Identifier: Apache-2.0
//
// Outputs of which a part did not arrive.

#pragma once

#include <hcy/hcyclient.hpp>
#include <stdexcept>
#include <vector>

namespace hcy::tools {

// what() says which output is incomplete, where in it, and what may be the cause.
class IncompleteOutput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws IncompleteOutput unless all outputs, and the arrays nested in them, hold every element
// that their dimensions name. Looks at no more than what arrived.
void requireWhole(const std::vector<hcyclient::Array>& outputs);

}  // namespace hcy::tools
