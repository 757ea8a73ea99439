// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <google/protobuf/io/coded_stream.h>

#include <cstdint>
#include <span>

#include "wire/array_class_traits.h"

namespace hcy {

using Bytes = std::span<const std::uint8_t>;

// Adds what can be read of the bytes to a message that a reply contains; false when that is not
// all.
template <class Message>
bool mergePart(Message& message, Bytes bytes) {
  // One level less than the message library allows: the reply itself is one.
  constexpr int nesting = 99;
  google::protobuf::io::CodedInputStream input(bytes.data(), static_cast<int>(bytes.size()));
  input.SetRecursionLimit(nesting);
  return message.MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
}

// Does the same for an empty array, with less work where its elements are varints.
bool readArray(VORTEN_Array& array, Bytes bytes);

}  // namespace hcy
