// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <stdexcept>

namespace hcy::tools {

// An array cannot be written in the notation; what() says why.
class NoNotation : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hcy::tools
