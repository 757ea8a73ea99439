// SPDX-License-Identifier: Apache-2.0
//
// Protocol Buffers messages as JSON, field by field, with what the schema does not know.

#pragma once

#include <google/protobuf/message.h>

#include <cstddef>
#include <string>

namespace hcy::tools {

struct UnknownFields {
  std::size_t count = 0;
  bool areAll = true;  // nothing is known but empty
};

// Counted in the messages inside, too.
UnknownFields unknownFieldsOf(const google::protobuf::Message& message);

// Fields have their names, unknown ones their numbers ("#9"). Code units are shown as a text where
// they are one, bytes that are no text in hexadecimal.
std::string toJson(const google::protobuf::Message& message);

}  // namespace hcy::tools
