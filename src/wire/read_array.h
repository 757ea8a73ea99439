// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <google/protobuf/io/coded_stream.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "wire/array_class_traits.h"
#include "wire/bytes.h"
#include "wire/packed_arrays.h"

namespace hcy {

// How many levels of messages an array of a reply may hold: one less than the message library
// allows, for the reply itself is one.
inline constexpr int kNesting = 99;

// Adds what can be read of the bytes to a message; false if that is not all.
template <class Message>
bool mergePart(Message& message, Bytes bytes, int nesting = kNesting) {
  google::protobuf::io::CodedInputStream input(bytes.data(), static_cast<int>(bytes.size()));
  input.SetRecursionLimit(nesting);
  return message.MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
}

// The elements of a 16-bit class, in the caller's own form. Signed ones are kept by their bits.
struct NarrowElements {
  std::vector<std::uint16_t> real;
  std::vector<std::uint16_t> imaginary;
};

// What is read of an array: its message, and beside it the elements of a container.
struct ArrayTarget {
  VORTEN_Array& message;
  std::shared_ptr<const PackedArrays>& arrays;
  // Takes the elements of a 16-bit class instead of the message, unless it is null.
  NarrowElements* narrow = nullptr;
};

// Reads an array of a reply into an empty target, as far as it arrived and is well-formed; false if
// that is not all. An element whose bytes are cut is not there.
bool readArray(ArrayTarget target, Bytes bytes);

// Reads an array that is well-formed, and stays where it lies: the elements of a container share
// its memory.
void readPackedArray(ArrayTarget target, const PackedArrays& arrays, std::size_t index);

}  // namespace hcy
