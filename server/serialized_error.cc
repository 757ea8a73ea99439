// SPDX-License-Identifier: Apache-2.0

#include "serialized_error.h"

#include <google/protobuf/io/coded_stream.h>

#include <string>

#include "hcy.client.VORTENResult.pb.h"

namespace hcy::server {
namespace {

using client::VORTEN_Error;
using client::VORTEN_Result;
using google::protobuf::io::CodedOutputStream;

// A tag of one byte, as fields 1 to 15 have, the length, and the bytes.
std::size_t fieldSize(std::size_t length) {
  return 1 + CodedOutputStream::VarintSize64(length) + length;
}

std::uint8_t* beginField(int number, std::size_t length, std::uint8_t* bytes) {
  constexpr int kLengthDelimited = 2;
  *bytes++ = static_cast<std::uint8_t>(number << 3 | kLengthDelimited);
  return CodedOutputStream::WriteVarint64ToArray(length, bytes);
}

}  // namespace

SerializedError::SerializedError(const FunctionError& error, std::string_view function)
    : error_(error), function_(function) {
  beginning_.set_message(error.what());
  beginning_.set_identifier(error.identifier());
  errorSize_ = beginning_.ByteSizeLong();
  VORTEN_Error::Stack_Frame frame;
  for (int i = 0; i < error.depth(); ++i) {
    makeFrame(i, frame);
    errorSize_ += fieldSize(frame.ByteSizeLong());
  }
  resultSize_ = fieldSize(errorSize_);
}

void SerializedError::writeTo(std::uint8_t* bytes) const {
  bytes = beginField(VORTEN_Result::kErrorFieldNumber, errorSize_, bytes);
  bytes = beginning_.SerializeWithCachedSizesToArray(bytes);
  VORTEN_Error::Stack_Frame frame;
  for (int i = 0; i < error_.depth(); ++i) {
    makeFrame(i, frame);
    bytes = beginField(VORTEN_Error::kStackFieldNumber, frame.ByteSizeLong(), bytes);
    bytes = frame.SerializeWithCachedSizesToArray(bytes);
  }
}

void SerializedError::makeFrame(int index, VORTEN_Error::Stack_Frame& frame) const {
  const StackFrame made = error_.frame(index);
  frame.set_file(made.file);
  frame.set_name(made.name.empty() ? std::string(function_) : made.name);
  frame.set_line(made.line);
}

ByteBuffer serialized(const FunctionError& error, std::string_view function) {
  const SerializedError made(error, function);
  ByteBuffer bytes;
  bytes.resizeUninitialized(made.size());
  made.writeTo(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

}  // namespace hcy::server
