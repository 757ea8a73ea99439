// SPDX-License-Identifier: Apache-2.0

#include "array/content_blocks.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "memory/large_block.h"

namespace hcy {
namespace {

// Elements are read one after the other, once: huge pages make that first use cheaper.
bool isMapped(std::size_t size) { return size >= kHugePage; }

struct ReleaseMemory {
  void operator()(char* memory) const {
    if (isMapped(size)) {
      unmapLargeBlock(memory, size);
    } else {
      std::free(memory);
    }
  }
  std::size_t size;
};
using Memory = std::unique_ptr<char, ReleaseMemory>;

Memory memoryOf(std::size_t size) {
  char* const memory = isMapped(size) ? mapLargeBlock(size) : static_cast<char*>(std::malloc(size));
  if (memory == nullptr) throw std::bad_alloc();
  return {memory, ReleaseMemory{size}};
}

}  // namespace

class ContentBlock {
 public:
  ContentBlock(std::size_t size, ContentBlock* previous)
      : size_(size), previous_(previous), memory_(memoryOf(size * sizeof(ArrayContent))) {}

  // A new content; null if the block is full.
  ArrayContent* make() {
    if (used_.load(std::memory_order_relaxed) >= size_) return nullptr;
    const std::size_t index = used_.fetch_add(1, std::memory_order_relaxed);
    if (index >= size_) return nullptr;
    owners_.fetch_add(1, std::memory_order_relaxed);
    return new (memory_.get() + index * sizeof(ArrayContent)) ArrayContent(this);
  }

  void release() {
    if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  std::size_t size() const { return size_; }
  ContentBlock* previous() const { return previous_; }

 private:
  std::atomic<std::size_t> owners_ = 1;  // the container, and each content
  std::atomic<std::size_t> used_ = 0;
  std::size_t size_;
  ContentBlock* previous_;
  Memory memory_;
};

void ArrayContent::destroy(const ArrayContent* content) {
  ContentBlock* const block = content->block_;
  if (block == nullptr) {
    delete content;
  } else {
    std::destroy_at(content);
    block->release();
  }
}

ContentBlocks::~ContentBlocks() {
  for (ContentBlock* block = newest_.load(); block != nullptr;) {
    std::exchange(block, block->previous())->release();
  }
}

ContentPtr ContentBlocks::make() {
  while (true) {
    ContentBlock* const newest = newest_.load(std::memory_order_acquire);
    if (newest == nullptr && single_.fetch_add(1, std::memory_order_relaxed) < kFirst) {
      return new ArrayContent;
    }
    if (newest != nullptr) {
      if (ArrayContent* const content = newest->make()) return content;
    }
    addBlock(newest);
  }
}

// Blocks before the newest one stay: another thread may just be looking into one of them.
void ContentBlocks::addBlock(ContentBlock* newest) {
  const std::size_t size = newest == nullptr ? kFirst : 2 * newest->size();
  auto block = std::make_unique<ContentBlock>(size, newest);
  // If another thread is faster, its block is the one.
  if (newest_.compare_exchange_strong(newest, block.get(), std::memory_order_acq_rel)) {
    static_cast<void>(block.release());
  }
}

void ContentBlocks::swap(ContentBlocks& other) noexcept {
  single_.store(other.single_.exchange(single_.load()));
  newest_.store(other.newest_.exchange(newest_.load()));
}

}  // namespace hcy
