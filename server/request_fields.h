// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "wire/bytes.h"

namespace hcy::server {

// What a VORTEN_Params holds, each input as its bytes, which are not looked into.
struct RequestFields {
  int nargout = 0;
  std::vector<Bytes> inputs;
};

// Nothing if the body is not a VORTEN_Params. The inputs lie in the body.
std::optional<RequestFields> requestFieldsOf(std::string_view body);

}  // namespace hcy::server
