// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <cstddef>
#include <utility>

#include "wire/array_data.h"

namespace hcy {

class ContentBlock;

// What an array holds, shared by the handles to it and the containers that it was stored in. The
// elements of a container and of a 16-bit class are here once they have been committed.
class ArrayContent {
 public:
  ArrayContent() = default;
  explicit ArrayContent(ArrayData&& content) : data(std::move(content)) {}
  // In a block, which is told when the content goes.
  explicit ArrayContent(ContentBlock* block) : block_(block) {}
  ArrayContent(const ArrayContent&) = delete;
  ArrayContent& operator=(const ArrayContent&) = delete;
  ~ArrayContent() = default;

  unsigned use_count() const { return owners_.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<unsigned> owners_ = 0;
  std::atomic<bool> isPartShown_ = false;

 public:
  // Whether it came from a server.
  bool isReceived = false;
  // Of a 16-bit class: whether the elements are here.
  bool isCommitted = true;

  // Has the typed part sent from now on, even if it is empty: elements have been asked for. What
  // the array holds does not change, for it may be read at the same time.
  void showPart() { isPartShown_.store(true, std::memory_order_relaxed); }
  bool isPartShown() const { return isPartShown_.load(std::memory_order_relaxed); }

  ArrayData data;

 private:
  friend void intrusive_ptr_add_ref(const ArrayContent* content) {
    content->owners_.fetch_add(1, std::memory_order_relaxed);
  }
  friend void intrusive_ptr_release(const ArrayContent* content) {
    if (content->owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy(content);
  }

  static void destroy(const ArrayContent* content);

  ContentBlock* block_ = nullptr;
};

using ContentPtr = boost::intrusive_ptr<ArrayContent>;

// A deep copy, with memory of its own.
ContentPtr copyOf(const ArrayContent& content);
// The same of a 16-bit class, whose elements are not committed yet.
ContentPtr copyWithoutElements(const ArrayContent& content);

// Reads an array out of a container, well-formed and in wire form, into an empty content.
void unpack(const PackedArrays& arrays, std::size_t index, ArrayContent& content);

// An unset element: a 0-by-0 double.
ContentPtr emptyDouble();

}  // namespace hcy
