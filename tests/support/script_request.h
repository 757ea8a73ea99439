// SPDX-License-Identifier: Apache-2.0
// Requests as a ScriptServer receives them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "script_channel.h"

namespace hcy::test {

struct RawRequest {
  std::string head;  // request line and headers up to and including the blank line
  std::string body;  // without the framing of a chunked body
  std::size_t connection = 0;

  // The value of the first header of this name in whatever case, without surrounding blanks.
  std::optional<std::string> header(std::string_view name) const;
};

std::string receiveRequestHead(Channel& channel);

// The body that belongs to `request.head`, be it chunked, of a given length or absent.
std::string receiveRequestBody(Channel& channel, const RawRequest& request);

}  // namespace hcy::test
