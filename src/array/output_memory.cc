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

// The count of a message's owners lies in the memory as well, and keeps it as long as it is there.
template <class T>
struct OutputMemory::Allocator {
  using value_type = T;

  OutputMemory* memory;

  explicit Allocator(OutputMemory* of) : memory(of) {}
  template <class U>
  explicit(false) Allocator(const Allocator<U>& other) : memory(other.memory) {}

  T* allocate(std::size_t count) {
    char* const place =
        google::protobuf::Arena::CreateArray<char>(&memory->arena_, count * sizeof(T));
    memory->ownedMessages_.fetch_add(1, std::memory_order_relaxed);
    return reinterpret_cast<T*>(place);
  }
  void deallocate(T* /*place*/, std::size_t /*count*/) {
    if (memory->ownedMessages_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete memory;
  }
};

// Leaves the message to its memory.
struct OutputMemory::Owner {
  OutputMemory* memory;
  void operator()(VORTEN_Array* /*message*/) const {}
};

// The first block is left as it is: the arena writes before it reads.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
OutputMemory::OutputMemory() : arena_(options(firstBlock_, sizeof firstBlock_)) {}

std::shared_ptr<VORTEN_Array> OutputMemory::createMessage() {
  auto memory = std::make_unique<OutputMemory>();
  auto message = memory->own(google::protobuf::Arena::CreateMessage<VORTEN_Array>(&memory->arena_));
  static_cast<void>(memory.release());  // the message keeps it from now on
  return message;
}

std::shared_ptr<VORTEN_Array> OutputMemory::own(VORTEN_Array* message) {
  return {message, Owner{this}, Allocator<VORTEN_Array>(this)};
}

OutputMemory* OutputMemory::of(const std::shared_ptr<VORTEN_Array>& message) {
  const Owner* const owner = std::get_deleter<Owner>(message);
  return owner != nullptr ? owner->memory : nullptr;
}

}  // namespace hcy
