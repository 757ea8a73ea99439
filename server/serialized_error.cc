// SPDX-License-Identifier: Apache-2.0

#include "serialized_error.h"

#include <string>

#include "field_bytes.h"

namespace hcy::server {
namespace {

// A line is sent as a varint of 64 bits with its sign.
std::uint64_t varintOf(int line) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(line));
}

std::size_t sizeOf(const StackFrame& frame) {
  return fieldSize(kFrameFile, frame.file.size()) + fieldSize(kFrameName, frame.name.size()) + 1 +
         varintSize(varintOf(frame.line));
}

std::uint8_t* write(const StackFrame& frame, std::uint8_t* out) {
  out = writeField(kFrameFile, bytesOf(frame.file), out);
  out = writeField(kFrameName, bytesOf(frame.name), out);
  *out++ = kFrameLine << 3;
  return writeVarint(varintOf(frame.line), out);
}

}  // namespace

SerializedError::SerializedError(const FunctionError& error, std::string_view function)
    : error_(error), function_(function) {
  errorSize_ = fieldSize(kErrorMessage, std::string_view(error.what()).size()) +
               fieldSize(kErrorIdentifier, error.identifier().size());
  for (int i = 0; i < error.depth(); ++i) errorSize_ += fieldSize(kErrorFrame, sizeOf(frame(i)));
  resultSize_ = fieldSize(kResultError, errorSize_);
}

void SerializedError::writeTo(std::uint8_t* bytes) const {
  bytes = beginField(kResultError, errorSize_, bytes);
  bytes = writeField(kErrorMessage, bytesOf(error_.what()), bytes);
  bytes = writeField(kErrorIdentifier, bytesOf(error_.identifier()), bytes);
  for (int i = 0; i < error_.depth(); ++i) {
    const StackFrame made = frame(i);
    bytes = write(made, beginField(kErrorFrame, sizeOf(made), bytes));
  }
}

StackFrame SerializedError::frame(int index) const {
  StackFrame made = error_.frame(index);
  if (made.name.empty()) made.name = function_;
  return made;
}

ByteBuffer serialized(const FunctionError& error, std::string_view function) {
  const SerializedError made(error, function);
  ByteBuffer bytes;
  bytes.resizeUninitialized(made.size());
  made.writeTo(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

}  // namespace hcy::server
