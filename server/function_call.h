// SPDX-License-Identifier: Apache-2.0
//
// From the body of a request to the body of its reply.

#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "budget.h"
#include "byte_buffer.h"
#include "function_error.h"
#include "function_table.h"
#include "message_memory.h"

namespace hcy::server {

struct Evaluation {
  // A serialised VORTEN_Result: the outputs, or the error that was raised.
  ByteBuffer result;
  BudgetShare room;
  std::chrono::nanoseconds replyDelay{0};
};

// One call, whose steps may be taken on different threads.
class FunctionCall {
 public:
  explicit FunctionCall(const Function& function) : function_(function) {}

  // False if the body is not a VORTEN_Params. Throws std::bad_alloc if the arguments take more
  // memory than there is.
  bool parse(ByteBuffer body);

  // Whether it has threads of its own.
  bool isForeign() const { return function_.isForeign; }

  // Whether evaluating may take longer than other clients should wait. For after parsing.
  bool takesLong() const;

  // For once, after parsing. Throws an Overload if there is no room for the reply, and
  // std::bad_alloc if there is no memory for it.
  Evaluation evaluate();

 private:
  Evaluation evaluateFunction();
  Evaluation raised(const FunctionError& error) const;
  Evaluation withRoomFor(std::size_t size) const;

  const Function& function_;
  // The arguments and what the outputs take.
  MessageMemoryShare memory_;
  // If there are arguments of classes that have no handles.
  ByteBuffer body_;
  std::vector<Value> inputs_;
  int nargout_ = 0;
  std::size_t requestSize_ = 0;
};

}  // namespace hcy::server
