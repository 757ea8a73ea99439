// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <google/protobuf/arena.h>

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <cstddef>
#include <memory>
#include <optional>

#include "array/field_index.h"
#include "wire/array_class_traits.h"
#include "wire/packed_arrays.h"

namespace hcy {

// What an array holds, as all see it who share it: handles over it, and containers that it was
// stored in. The elements of a container lie in wire form beside the message; those of a 16-bit
// class are in the message once they have been committed.
class ArrayContent : public boost::intrusive_ref_counter<ArrayContent> {
 public:
  // From this size on, elements lie in blocks of their own.
  static constexpr std::size_t kLarge = std::size_t{64} << 10;

  // An empty message, for elements of about that many bytes.
  explicit ArrayContent(std::size_t size = 0);
  ArrayContent(const ArrayContent&) = delete;
  ArrayContent& operator=(const ArrayContent&) = delete;
  ~ArrayContent() = default;

  VORTEN_Array& message() const { return *message_; }

  // Of a container: what was committed last; null for no elements.
  std::shared_ptr<const PackedArrays> arrays;
  // Whether it came from a server.
  bool isReceived = false;
  // Of a 16-bit class: whether the elements are in the message.
  bool isCommitted = true;

  // Has the typed part of the message sent from now on, even if it is empty: elements have been
  // asked for. The message itself does not change, for it may be read at the same time.
  void showPart() { isPartShown_.store(true, std::memory_order_relaxed); }
  bool isPartShown() const { return isPartShown_.load(std::memory_order_relaxed); }

  // Finds the fields of a struct by name.
  FieldIndex& fields() { return fields_; }

 private:
  std::unique_ptr<google::protobuf::Arena> arena_;  // of a large one
  std::optional<VORTEN_Array> own_;                 // of any other
  VORTEN_Array* message_;
  std::atomic<bool> isPartShown_ = false;
  FieldIndex fields_;
};

using ContentPtr = boost::intrusive_ptr<ArrayContent>;

// A deep copy, with memory of its own.
ContentPtr copyOf(const ArrayContent& content);

// An array out of a container, well-formed and in wire form.
ContentPtr unpacked(const PackedArrays& arrays, std::size_t index);

// An element that was never set: a 0-by-0 double.
ContentPtr emptyDouble();

}  // namespace hcy
