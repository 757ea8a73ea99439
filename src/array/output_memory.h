// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <google/protobuf/arena.h>

#include <atomic>
#include <cstddef>
#include <memory>

#include "wire/array_class_traits.h"

namespace hcy {

// The memory of one output of a call, all elements of a container included: a few blocks instead
// of several for each element. It is released when none of its messages has an owner any more.
class OutputMemory {
 public:
  // A message in new memory.
  static std::shared_ptr<VORTEN_Array> createMessage();

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

  std::atomic<std::size_t> ownedMessages_ = 0;
  alignas(
      8) char firstBlock_[896];  // enough for a small array; malloc is quickest up to 1 KiB in all
  google::protobuf::Arena arena_;
};

}  // namespace hcy
