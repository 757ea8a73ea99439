// SPDX-License-Identifier: Apache-2.0

#include "array/output_memory.h"

#include <cstdlib>
#include <new>

#include "memory/large_block.h"

namespace hcy {
namespace {

bool isMapped(std::size_t size) { return size >= kHugePage; }

void* allocateBlock(std::size_t size) {
  void* const block = isMapped(size) ? mapLargeBlock(size) : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void freeBlock(void* block, std::size_t size) {
  if (isMapped(size)) {
    unmapLargeBlock(static_cast<char*>(block), size);
  } else {
    std::free(block);
  }
}

google::protobuf::ArenaOptions options(char* firstBlock, std::size_t size) {
  google::protobuf::ArenaOptions options;
  options.initial_block = firstBlock;
  options.initial_block_size = size;
  options.start_block_size = 4 * size;
  options.max_block_size = kHugePage;
  options.block_alloc = allocateBlock;
  options.block_dealloc = freeBlock;
  return options;
}

}  // namespace

// The count of a message's owners lies in the memory too, and keeps it: until after the count
// itself is gone, which is how long an allocator has to live.
template <class T>
struct OutputMemory::Allocator {
  using value_type = T;

  std::shared_ptr<OutputMemory> memory;

  explicit Allocator(std::shared_ptr<OutputMemory> shared) : memory(std::move(shared)) {}
  template <class U>
  explicit(false) Allocator(const Allocator<U>& other) : memory(other.memory) {}

  T* allocate(std::size_t count) {
    return reinterpret_cast<T*>(
        google::protobuf::Arena::CreateArray<char>(&memory->arena_, count * sizeof(T)));
  }
  void deallocate(T*, std::size_t) {}
};

// Leaves the message to its memory.
struct OutputMemory::Owner {
  OutputMemory* memory;
  void operator()(VORTEN_Array*) const {}
};

OutputMemory::OutputMemory() : arena_(options(firstBlock_, sizeof firstBlock_)) {}

std::shared_ptr<VORTEN_Array> OutputMemory::own(VORTEN_Array* message) {
  return {message, Owner{this}, Allocator<VORTEN_Array>(shared_from_this())};
}

OutputMemory* OutputMemory::of(const std::shared_ptr<VORTEN_Array>& message) {
  const Owner* const owner = std::get_deleter<Owner>(message);
  return owner != nullptr ? owner->memory : nullptr;
}

}  // namespace hcy
