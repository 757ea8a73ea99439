// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>

namespace hcyclient {

// The message of the UsageError that the use throws; empty if it throws none.
template <class Use>
std::string refusalOf(Use use) {
  try {
    use();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

}  // namespace hcyclient
