// SPDX-License-Identifier: Apache-2.0
//
// A library of somebody else, with a Protocol Buffers of its own version.

#include <google/protobuf/timestamp.pb.h>

extern "C" bool otherWorks() {
  google::protobuf::Timestamp sent;
  sent.set_seconds(1234567890);
  google::protobuf::Timestamp received;
  return received.ParseFromString(sent.SerializeAsString()) && received.seconds() == 1234567890;
}
