// SPDX-License-Identifier: Apache-2.0
//
// Outputs that did not arrive completely.

#pragma once

#include <hcy/hcyclient.hpp>
#include <stdexcept>
#include <vector>

namespace hcy::tools {

// what() names the output, the place in it and the possible cause.
class IncompleteOutput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws IncompleteOutput unless all outputs, and the arrays nested in them, have all the elements
// that their dimensions call for. Takes time in proportion to what arrived.
void requireWhole(const std::vector<hcyclient::Array>& outputs);

}  // namespace hcy::tools
