// SPDX-License-Identifier: Apache-2.0

#include "bodies/wire_schema.h"

#include <google/protobuf/descriptor.pb.h>

#include <stdexcept>

#include "wire_schema_bytes.h"

namespace hcy::tools {
namespace {

using google::protobuf::DescriptorProto;
using google::protobuf::FieldDescriptorProto;

// Makes strings bytes: the parser would refuse a body with a string that is not UTF-8.
void readStringsAsBytes(DescriptorProto& type) {
  for (FieldDescriptorProto& field : *type.mutable_field()) {
    if (field.type() == FieldDescriptorProto::TYPE_STRING) {
      field.set_type(FieldDescriptorProto::TYPE_BYTES);
    }
  }
  for (DescriptorProto& nested : *type.mutable_nested_type()) readStringsAsBytes(nested);
}

}  // namespace

WireSchema::WireSchema() {
  google::protobuf::FileDescriptorSet files;
  if (!files.ParseFromArray(kWireSchema, static_cast<int>(sizeof kWireSchema))) {
    throw std::logic_error("the schema cannot be read");
  }
  for (auto& file : *files.mutable_file()) {
    for (DescriptorProto& type : *file.mutable_message_type()) readStringsAsBytes(type);
    if (pool_.BuildFile(file) == nullptr) throw std::logic_error("the schema is invalid");
  }
}

MessagePointer WireSchema::make(const std::string& type) const {
  return MessagePointer(factory_.GetPrototype(pool_.FindMessageTypeByName(type))->New());
}

}  // namespace hcy::tools
