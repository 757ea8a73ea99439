// SPDX-License-Identifier: Apache-2.0
//
// Linked by find_protobuf.cmake into a shared library, as a trial.

#include <google/protobuf/descriptor.h>

const void* pool() { return google::protobuf::DescriptorPool::generated_pool(); }
