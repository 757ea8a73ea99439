// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>

namespace hcy {

// The elements of one part of an array, as bytes. A few lie in the object itself, more on the heap,
// and many in a mapped block of their own, or inside memory that others own too. Sizes are in
// bytes, and capacities are exact: a buffer that is sized once has no more room than that.
// Operations that need memory throw std::bad_alloc and change nothing then.
class ElementBuffer {
 public:
  // Room that takes no allocation.
  static constexpr std::size_t kInline = 16;

  // The least size of a block that has its own mapping. The heap keeps smaller ones for the next
  // array of their size, which finds them warm; larger ones it maps again each time, without
  // huge pages.
  static constexpr std::size_t kLeastMapped = std::size_t{32} << 20;

  ElementBuffer() noexcept = default;
  ElementBuffer(ElementBuffer&& other) noexcept { take(other); }
  ElementBuffer& operator=(ElementBuffer&& other) noexcept {
    if (this == &other) return *this;
    release();
    take(other);
    return *this;
  }
  ~ElementBuffer() { release(); }

  // Bytes that lie in memory which the owner keeps.
  static ElementBuffer inside(const std::shared_ptr<void>& owner, std::byte* data,
                              std::size_t size);

  ElementBuffer copy() const;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::size_t capacity() const {
    if (place_ == Place::Inline) return kInline;
    return place_ == Place::Inside ? size() : storage_.block.size;
  }

  std::byte* data() { return place_ == Place::Inline ? storage_.bytes : storage_.block.data; }
  const std::byte* data() const {
    return place_ == Place::Inline ? storage_.bytes : storage_.block.data;
  }

  template <class Element>
  std::span<const Element> as() const {
    static_assert(std::is_trivially_copyable_v<Element>);
    return {reinterpret_cast<const Element*>(data()), size_ / sizeof(Element)};
  }

  // Gives room for that many bytes.
  void reserve(std::size_t size) {
    if (size > capacity()) grow(size, false);
  }

  // What is kept stays, what is new is zero.
  void resize(std::size_t size);

  // Adds that many bytes, whatever they hold, and returns them. A buffer that is added to again and
  // again grows by half of its size.
  std::byte* extend(std::size_t size);

  // Keeps the first bytes.
  void truncate(std::size_t size) { size_ = size & kLargest; }

 private:
  // As wide as the size beside it, or compilers for Windows would not pack the two.
  enum class Place : std::uint64_t { Inline, Heap, Mapped, Inside };
  struct Block {
    std::byte* data;
    union {
      std::size_t size;
      std::shared_ptr<void>* owner;
    };
  };

  static constexpr std::uint64_t kLargest = (std::uint64_t{1} << 56) - 1;

  void grow(std::size_t capacity, bool isZero);
  void release();
  void take(ElementBuffer& other) noexcept {
    storage_ = other.storage_;
    size_ = other.size_;
    place_ = other.place_;
    other.size_ = 0;
    other.place_ = Place::Inline;
  }

  union Storage {
    alignas(8) std::byte bytes[kInline];
    Block block;
  };

  Storage storage_ = {};
  std::uint64_t size_ : 56 = 0;
  Place place_ : 8 = Place::Inline;
};

static_assert(sizeof(ElementBuffer) == 24);

}  // namespace hcy
