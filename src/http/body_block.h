// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <utility>

namespace hcy {

// Memory for the bytes of one body, which grows as they arrive. A large block has its own mapping,
// with huge pages: its first use costs less, and the process's heap is left alone.
class BodyBlock {
 public:
  BodyBlock() = default;
  BodyBlock(BodyBlock&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), capacity_(std::exchange(other.capacity_, 0)) {}
  BodyBlock& operator=(BodyBlock&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~BodyBlock();

  char* data() const { return data_; }
  std::size_t capacity() const { return capacity_; }

  // Gives the block room for that many bytes and more. What it holds stays, at another address
  // perhaps. False, and nothing has changed, if memory runs out.
  bool reserve(std::size_t capacity);

  // Releases what a large block has beyond that many bytes.
  void trim(std::size_t capacity);

 private:
  char* data_ = nullptr;
  std::size_t capacity_ = 0;
};

// A block that waits for the next body; one that is larger than this is not kept, so that a
// client at rest holds little memory.
class SpareBlock {
 public:
  static constexpr std::size_t kMostKept = std::size_t{4} << 20;

  BodyBlock take() { return std::move(block_); }
  void giveBack(BodyBlock&& block) {
    if (block.capacity() <= kMostKept) block_ = std::move(block);
  }

 private:
  BodyBlock block_;
};

}  // namespace hcy
