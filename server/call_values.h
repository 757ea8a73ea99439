// SPDX-License-Identifier: Apache-2.0
//
// The values in the bodies of requests and replies, in the lossless JSON notation of hcy.

#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "byte_buffer.h"

namespace hcy::server {

struct ShownRequest {
  int nargout = 0;
  // On one line each; one that JSON cannot hold, or that did not arrive whole, is said in angle
  // brackets, and `areExact` is false.
  std::vector<std::string> inputs;
  bool areExact = true;
};

struct ShownReply {
  std::vector<std::string> outputs;
  // Of a function that failed: "identifier: message".
  std::optional<std::string> error;
};

// Nothing if the body is not a VORTEN_Params, or a VORTEN_Result.
std::optional<ShownRequest> showRequest(std::string_view body);
std::optional<ShownReply> showReply(std::string_view body);

// The text fit for a terminal, and cut to a number of columns; 0 for no limit.
std::string cutText(std::string_view text, std::size_t columns);

// An answer that is not what it should be; what() says where.
class BadAnswer : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The call as a line of JSON, with its line end:
// {"function": ..., "nargout": ..., "inputs": [...]}. Throws BadAnswer if an input is not one that
// the notation can hold.
std::string lineOfCall(std::string_view function, const ShownRequest& request);

// The VORTEN_Result that a line of JSON stands for: {"outputs": [...]}, or
// {"error": {"identifier": ..., "message": ..., "stack": [{"file", "name", "line"}]}}. Outputs
// beyond `nargout` are left out. Throws BadAnswer.
ByteBuffer resultOfLine(std::string_view line, int nargout);

}  // namespace hcy::server
