// SPDX-License-Identifier: Apache-2.0
//
// Protocol Buffers messages as JSON, field by field, with the unknown fields.

#pragma once

#include <google/protobuf/message.h>

#include <cstddef>
#include <string>

namespace hcy::tools {

struct UnknownFields {
  std::size_t count = 0;
  bool areAll = true;  // whether no known field has a value
};

// Counts those of nested messages, too.
UnknownFields unknownFieldsOf(const google::protobuf::Message& message);

// Fields have their names, unknown ones their numbers ("#9"). Code units are shown as a string if
// they are valid text, and bytes that are not UTF-8 in hexadecimal.
std::string toJson(const google::protobuf::Message& message);

}  // namespace hcy::tools
