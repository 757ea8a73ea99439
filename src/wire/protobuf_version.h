// SPDX-License-Identifier: Apache-2.0
//
// What Protocol Buffers spells differently in its versions, from 3.21 to 36. Sources use these
// functions and no version's own form. The last two are all that is used of the internal interfaces
// of Protocol Buffers, which may change with any version; no public function does the same.

#pragma once

#include <google/protobuf/arena.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace hcy {

// A message in the arena, which owns it. Create() constructs a message outside of the arena before
// 26; CreateMessage() is deprecated from 26 on and is gone in 36.
template <class Message>
Message& createMessage(google::protobuf::Arena& arena) {
#if GOOGLE_PROTOBUF_VERSION >= 5026000
  return *google::protobuf::Arena::Create<Message>(&arena);
#else
  return *google::protobuf::Arena::CreateMessage<Message>(&arena);
#endif
}

// Cuts the list, or appends copies of the value. Resize() is deprecated in 36, and older versions
// have no resize().
template <class Element>
void resizeList(google::protobuf::RepeatedField<Element>& list, int size,
                std::type_identity_t<Element> value = {}) {
  if constexpr (requires { list.resize(size, value); }) {
    list.resize(size, value);
  } else {
    list.Resize(size, value);
  }
}

// The name of a message, field, enumeration or file, which lives as long as its pool. name() is a
// std::string before 30, and a view from then on.
template <class Descriptor>
std::string_view nameOf(const Descriptor& descriptor) {
  return descriptor.name();
}

// The name with the package and the messages around it; it differs like name().
template <class Descriptor>
std::string_view fullNameOf(const Descriptor& descriptor) {
  return descriptor.full_name();
}

// Skips the rest of the field that begins with the tag, a group with all that it holds. False if it
// is malformed or cut off.
inline bool skipField(google::protobuf::io::CodedInputStream& input, std::uint32_t tag) {
  return google::protobuf::internal::WireFormatLite::SkipField(&input, tag);
}

// The number of bytes in which the fields are written.
inline std::size_t sizeOf(const google::protobuf::UnknownFieldSet& fields) {
  return google::protobuf::internal::WireFormat::ComputeUnknownFieldsSize(fields);
}

}  // namespace hcy
