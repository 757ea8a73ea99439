// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "array/array_content.h"
#include "wire/write_array.h"

struct hcyArray;

namespace hcy {

class VORTENArrayProxy;

// What an array is sent as.
struct ArrayToSend {
  ContentPtr content;
  std::unique_ptr<ElementFields> elements;  // those that are not in the content; null for none
};

// Whether an empty part is to be sent that the array does not have.
bool needsPart(const ArrayContent& content);

// Its bytes.
class SentArray {
 public:
  explicit SentArray(ArrayToSend array);

  std::size_t size() const { return written_->size(); }
  std::uint8_t* write(std::uint8_t* out) const { return written_->write(out); }

 private:
  ArrayToSend array_;
  std::optional<WrittenArray> written_;
};

// The inputs of one call, whose handles commit their elements one after the other. A container
// shows an element as it has been committed when its own turn comes, and an array that is an input
// twice is sent twice as it is at the end.
class SentInputs {
 public:
  explicit SentInputs(std::span<const hcyArray* const> inputs);

  ArrayToSend input(std::size_t index) const;

 private:
  friend class SendingOrder;

  struct Input {
    const ArrayContent* content;
    std::size_t turn;
    bool operator<(const Input& other) const;
  };

  // The last input with this content whose turn comes before.
  const Input* lastBefore(std::size_t turn, const ArrayContent& content) const;
  ArrayToSend inTurn(std::size_t turn) const;

  std::span<const hcyArray* const> inputs_;
  std::vector<Input> committing_;
};

// A place in that order; without inputs, for an array that is written for itself.
class SendingOrder {
 public:
  SendingOrder() = default;
  SendingOrder(const SentInputs& inputs, std::size_t turn) : inputs_(&inputs), turn_(turn) {}

  // An element of a container that is an input too, as it is at this place; nothing for another.
  std::optional<ArrayToSend> elementToSend(const ArrayContent& content) const;

 private:
  const SentInputs* inputs_ = nullptr;
  std::size_t turn_ = 0;
};

}  // namespace hcy
