// SPDX-License-Identifier: Apache-2.0
//
// From the body of a request to the body of its reply.

#pragma once

#include <chrono>
#include <optional>

#include "byte_buffer.h"
#include "function_table.h"

namespace hcy::server {

struct Evaluation {
  // A serialised VORTEN_Result: the outputs, or the error that was raised.
  ByteBuffer result;
  std::chrono::nanoseconds replyDelay{0};
};

// Absent if the body is no VORTEN_Params. Throws std::bad_alloc if the arguments take more memory
// than there is.
std::optional<Evaluation> evaluate(const Function& function, ByteBuffer body);

}  // namespace hcy::server
