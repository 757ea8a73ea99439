// SPDX-License-Identifier: Apache-2.0

#include "array/slot_table.h"

#include <utility>

namespace hcy {

SlotTable::SlotTable(std::size_t size, std::shared_ptr<const PackedArrays> packed)
    : packed_(std::move(packed)),
      size_(size),
      packedSize_(packed_ ? size : 0),
      firstSize_(std::min(size, kChunk)),
      chunkCount_(chunksFor(size)) {
  if (size != 0) chunks_ = std::make_unique<std::atomic<Slot*>[]>(chunkCount_);
}

SlotTable::~SlotTable() {
  forEachSeen([](std::size_t /*index*/, ArrayContent* content) { intrusive_ptr_release(content); });
  for (std::size_t i = 0; i < chunkCount_; ++i) delete[] chunks_[i].load();
}

ContentPtr SlotTable::at(std::size_t index) const {
  if (index >= size_) return nullptr;
  Slot& slot = slotAt(index);
  if (ArrayContent* const seen = slot.load(std::memory_order_acquire)) return seen;
  ContentPtr made = index < packedSize_ ? takeOut(index) : emptyDouble();
  ArrayContent* expected = nullptr;
  intrusive_ptr_add_ref(made.get());  // the table's own
  if (slot.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel)) return made;
  // Another thread was faster.
  intrusive_ptr_release(made.get());
  return expected;
}

ContentPtr SlotTable::takeOut(std::size_t index) const {
  ContentPtr content = blocks_.make();
  unpack(*packed_, index, *content);
  return content;
}

const ArrayContent* SlotTable::seen(std::size_t index) const {
  const Slot* const chunk = chunks_[index / kChunk].load(std::memory_order_acquire);
  return chunk != nullptr ? chunk[index % kChunk].load(std::memory_order_acquire) : nullptr;
}

void SlotTable::set(std::size_t index, ContentPtr content) {
  ArrayContent* const old = slotAt(index).exchange(content.detach());
  if (old != nullptr) intrusive_ptr_release(old);
}

bool SlotTable::isPacked() const {
  if (packed_ ? packedSize_ != size_ || packed_->size() != size_ : size_ != 0) return false;
  bool isPacked = true;
  forEachSeen([&](std::size_t /*index*/, ArrayContent* /*content*/) { isPacked = false; });
  return isPacked;
}

void SlotTable::resize(std::size_t size) {
  if (size < size_) {
    shrink(size);
  } else {
    grow(size);
  }
  size_ = size;
}

void SlotTable::shrink(std::size_t size) {
  forEachSeen([&](std::size_t index, ArrayContent* content) {
    if (index < size) return;
    slotAt(index).store(nullptr);
    intrusive_ptr_release(content);
  });
  packedSize_ = std::min(packedSize_, size);
}

// By half and more, so that growing one by one stays cheap.
void SlotTable::grow(std::size_t size) {
  const std::size_t count = chunksFor(size);
  Chunks chunks;
  const bool needsChunks = count > chunkCount_;
  const std::size_t newCount = needsChunks ? std::max(count, chunkCount_ + chunkCount_ / 2) : 0;
  if (needsChunks) chunks = std::make_unique<std::atomic<Slot*>[]>(newCount);
  if (size > firstSize_ && firstSize_ < kChunk) {
    const std::size_t newSize = std::min(kChunk, std::max(size, firstSize_ + firstSize_ / 2));
    if (chunkCount_ != 0 && chunks_[0].load() != nullptr) {
      auto first = std::make_unique<Slot[]>(newSize);
      const std::unique_ptr<Slot[]> old(chunks_[0].load());
      for (std::size_t i = 0; i < firstSize_; ++i) first[i].store(old[i].load());
      chunks_[0].store(first.release());
    }
    firstSize_ = newSize;
  }
  if (!needsChunks) return;
  for (std::size_t i = 0; i < chunkCount_; ++i) chunks[i].store(chunks_[i].load());
  chunks_ = std::move(chunks);
  chunkCount_ = newCount;
}

void SlotTable::copyFrom(const SlotTable& other) {
  SlotTable table(other.size_);
  table.packed_ = other.packed_;
  table.packedSize_ = other.packedSize_;
  other.forEachSeen(
      [&](std::size_t index, ArrayContent* content) { table.set(index, copyOf(*content)); });
  swap(table);
}

SlotTable::Slot& SlotTable::slotAt(std::size_t index) const {
  std::atomic<Slot*>& chunk = chunks_[index / kChunk];
  Slot* slots = chunk.load(std::memory_order_acquire);
  if (slots == nullptr) {
    auto made = std::make_unique<Slot[]>(sizeOfChunk(index / kChunk));
    // If another thread is faster, its chunk is the one.
    if (chunk.compare_exchange_strong(slots, made.get(), std::memory_order_acq_rel)) {
      slots = made.release();
    }
  }
  return slots[index % kChunk];
}

template <class Use>
void SlotTable::forEachSeen(Use use) const {
  for (std::size_t i = 0; i < chunkCount_; ++i) {
    const Slot* const chunk = chunks_[i].load(std::memory_order_acquire);
    for (std::size_t j = 0; chunk != nullptr && j < sizeOfChunk(i); ++j) {
      ArrayContent* const content = chunk[j].load(std::memory_order_acquire);
      if (content != nullptr) use(i * kChunk + j, content);
    }
  }
}

void SlotTable::swap(SlotTable& other) noexcept {
  std::swap(packed_, other.packed_);
  std::swap(size_, other.size_);
  std::swap(packedSize_, other.packedSize_);
  std::swap(firstSize_, other.firstSize_);
  std::swap(chunkCount_, other.chunkCount_);
  std::swap(chunks_, other.chunks_);
  blocks_.swap(other.blocks_);
}

}  // namespace hcy
