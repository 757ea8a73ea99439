// SPDX-License-Identifier: Apache-2.0
//
// The server has too much to do for this call; a later attempt may succeed.

#pragma once

#include <stdexcept>

namespace hcy::server {

class Overload : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hcy::server
