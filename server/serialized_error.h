// SPDX-License-Identifier: Apache-2.0
//
// A FunctionError as it crosses the wire, written frame by frame: a message of all frames would
// take several times the memory of its bytes.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "byte_buffer.h"
#include "function_error.h"

namespace hcy::server {

// The error and the name of the function live longer.
class SerializedError {
 public:
  SerializedError(const FunctionError& error, std::string_view function);

  // Of a VORTEN_Result that holds the error.
  std::size_t size() const { return resultSize_; }
  void writeTo(std::uint8_t* bytes) const;

 private:
  StackFrame frame(int index) const;

  const FunctionError& error_;
  const std::string_view function_;
  std::size_t errorSize_ = 0;
  std::size_t resultSize_ = 0;
};

// The whole VORTEN_Result.
ByteBuffer serialized(const FunctionError& error, std::string_view function);

}  // namespace hcy::server
