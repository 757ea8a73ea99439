// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <cstddef>
#include <utility>

#include "array/field_index.h"
#include "wire/array_data.h"

namespace hcy {

// What an array holds, as all see it who share it: handles over it, and containers that it was
// stored in. The elements of a container and of a 16-bit class are here once they have been
// committed.
class ArrayContent : public boost::intrusive_ref_counter<ArrayContent> {
 public:
  ArrayContent() = default;
  explicit ArrayContent(ArrayData&& content) : data(std::move(content)) {}
  ArrayContent(const ArrayContent&) = delete;
  ArrayContent& operator=(const ArrayContent&) = delete;
  ~ArrayContent() = default;

  // Whether it came from a server.
  bool isReceived = false;
  // Of a 16-bit class: whether the elements are here.
  bool isCommitted = true;

  // Has the typed part sent from now on, even if it is empty: elements have been asked for. What
  // the array holds does not change, for it may be read at the same time.
  void showPart() { isPartShown_.store(true, std::memory_order_relaxed); }
  bool isPartShown() const { return isPartShown_.load(std::memory_order_relaxed); }

  // Finds the fields of a struct by name.
  FieldIndex& fields() { return fields_; }

 private:
  std::atomic<bool> isPartShown_ = false;
  FieldIndex fields_;

 public:
  ArrayData data;
};

using ContentPtr = boost::intrusive_ptr<ArrayContent>;

// A deep copy, with memory of its own.
ContentPtr copyOf(const ArrayContent& content);

// An array out of a container, well-formed and in wire form.
ContentPtr unpacked(const PackedArrays& arrays, std::size_t index);

// An element that was never set: a 0-by-0 double.
ContentPtr emptyDouble();

}  // namespace hcy
