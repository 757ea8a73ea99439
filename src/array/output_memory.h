// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <google/protobuf/arena.h>

#include <memory>

#include "wire/array_class_traits.h"

namespace hcy {

// The memory of one output of a call, all elements of a container included: a few blocks instead
// of several for each element. It is released when the last of its messages has no owner left.
class OutputMemory : public std::enable_shared_from_this<OutputMemory> {
 public:
  static std::shared_ptr<OutputMemory> create() { return std::make_shared<OutputMemory>(); }

  // A new message, owned by whoever holds the pointer.
  std::shared_ptr<VORTEN_Array> createMessage() {
    return own(google::protobuf::Arena::CreateMessage<VORTEN_Array>(&arena_));
  }

  // Makes a message that lies in this memory, and that no other one contains any more, one that
  // counts its own owners.
  std::shared_ptr<VORTEN_Array> own(VORTEN_Array* message);

  // The memory that an owned message lies in; null for one on the heap.
  static OutputMemory* of(const std::shared_ptr<VORTEN_Array>& message);

  OutputMemory();
  OutputMemory(const OutputMemory&) = delete;
  OutputMemory& operator=(const OutputMemory&) = delete;

 private:
  template <class T>
  struct Allocator;
  struct Owner;

  alignas(8) char firstBlock_[1024];  // enough for a small array
  google::protobuf::Arena arena_;
};

}  // namespace hcy
