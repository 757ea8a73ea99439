// SPDX-License-Identifier: Apache-2.0
//
// The schema of the bodies, read while the program runs: the classes that protoc generates from it
// can be in a process only once, and the library has them.

#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>

namespace hcy::tools {

using MessagePointer = std::unique_ptr<google::protobuf::Message>;

class WireSchema {
 public:
  WireSchema();

  // Empty messages, which must not outlive the schema.
  MessagePointer makeRequest() const { return make("hcy.client.VORTEN_Params"); }
  MessagePointer makeReply() const { return make("hcy.client.VORTEN_Result"); }

 private:
  MessagePointer make(const std::string& type) const;

  google::protobuf::DescriptorPool pool_;
  mutable google::protobuf::DynamicMessageFactory factory_;
};

}  // namespace hcy::tools
