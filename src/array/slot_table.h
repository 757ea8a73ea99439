// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>

#include "array/array_content.h"
#include "array/content_blocks.h"

namespace hcy {

// The elements of a container behind a handle. An element is taken out of the container's packed
// arrays when it is first asked for; those that nobody asks for stay there. Any number of threads
// may read one table.
class SlotTable {
 public:
  // That many unset elements.
  explicit SlotTable(std::size_t size = 0) : SlotTable(size, nullptr) {}
  // The elements of packed arrays; null for none.
  explicit SlotTable(const std::shared_ptr<const PackedArrays>& packed)
      : SlotTable(packed ? packed->size() : 0, packed) {}
  SlotTable(const SlotTable&) = delete;
  SlotTable& operator=(const SlotTable&) = delete;
  SlotTable& operator=(SlotTable&& other) noexcept {
    swap(other);
    return *this;
  }
  ~SlotTable();

  std::size_t size() const { return size_; }

  // The element of a slot, a 0-by-0 double if it is unset; null beyond the end.
  ContentPtr at(std::size_t index) const;
  // The same if it has been asked for or set before, else null.
  const ArrayContent* seen(std::size_t index) const;
  // Whether the slot has been neither set nor read, and no packed array belongs to it.
  bool isUnset(std::size_t index) const { return index >= packedSize_ && !seen(index); }
  void set(std::size_t index, ContentPtr content);

  // The packed arrays, of which the first packedSize() belong to slots.
  const std::shared_ptr<const PackedArrays>& packed() const { return packed_; }
  std::size_t packedSize() const { return packedSize_; }
  // Whether the elements are exactly those of the packed arrays.
  bool isPacked() const;

  // Keeps the elements that fit; new ones are unset. Nothing has changed if it throws.
  void resize(std::size_t size);
  // Becomes a copy of the other with copies of its elements.
  void copyFrom(const SlotTable& other);

 private:
  using Slot = std::atomic<ArrayContent*>;
  static constexpr std::size_t kChunk = 256;

  SlotTable(std::size_t size, std::shared_ptr<const PackedArrays> packed);

  using Chunks = std::unique_ptr<std::atomic<Slot*>[]>;

  static std::size_t chunksFor(std::size_t size) { return (size + kChunk - 1) / kChunk; }
  // A small table has one small chunk.
  std::size_t sizeOfChunk(std::size_t chunk) const { return chunk == 0 ? firstSize_ : kChunk; }
  ContentPtr takeOut(std::size_t index) const;
  void shrink(std::size_t size);
  void grow(std::size_t size);
  Slot& slotAt(std::size_t index) const;
  template <class Use>
  void forEachSeen(Use use) const;
  void swap(SlotTable& other) noexcept;

  std::shared_ptr<const PackedArrays> packed_;
  std::size_t size_;
  std::size_t packedSize_;
  // Chunks of slots, made when one of them is needed.
  std::size_t firstSize_;
  std::size_t chunkCount_;
  Chunks chunks_;
  mutable ContentBlocks blocks_;
};

}  // namespace hcy
