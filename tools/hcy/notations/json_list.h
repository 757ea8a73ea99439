// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <hcy/hcyclient.hpp>
#include <string>
#include <vector>

#include "notations/array_json.h"

namespace hcy::tools {

// A line with the arrays as a list, as --each reads it.
inline std::string jsonList(const std::vector<hcyclient::Array>& arrays) {
  std::string list = "[";
  for (const hcyclient::Array& array : arrays) {
    list += (list.size() == 1 ? "" : ",") + toJson(array);
  }
  return list + "]\n";
}

}  // namespace hcy::tools
