// SPDX-License-Identifier: Apache-2.0

#include "array/array_to_send.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "array/array_handle.h"
#include "wire/data_accessor.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/element_storage.h"

namespace hcy {
namespace {

// The classes whose handles keep elements outside the content.
bool isCommitting(VORTEN_Array::QXType type) {
  return dispatch_on_QXType(
      type, []<class Class>(Class) { return WidenedClass<Class> || ContainerClass<Class>; });
}

}  // namespace

bool needsPart(const ArrayContent& content) {
  return content.isPartShown() && !accessData(content.data, false).isPresent;
}

SentArray::SentArray(ArrayToSend array) : array_(std::move(array)) {
  if (needsPart(*array_.content)) {
    array_.content = copyOf(*array_.content);
    showElements(array_.content->data);
  }
  written_.emplace(array_.content->data, array_.elements.get());
}

bool SentInputs::Input::operator<(const Input& other) const {
  return std::tie(content, turn) < std::tie(other.content, other.turn);
}

SentInputs::SentInputs(std::span<const hcyArray* const> inputs) : inputs_(inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const ContentPtr& content = proxyOf(inputs[i]).content();
    if (isCommitting(content->data.type())) committing_.push_back({content.get(), i});
  }
  std::ranges::sort(committing_, std::less<>());
}

const SentInputs::Input* SentInputs::lastBefore(std::size_t turn,
                                                const ArrayContent& content) const {
  const auto next = std::lower_bound(committing_.begin(), committing_.end(), Input{&content, turn});
  if (next == committing_.begin() || std::prev(next)->content != &content) return nullptr;
  return &*std::prev(next);
}

ArrayToSend SentInputs::inTurn(std::size_t turn) const {
  return proxyOf(inputs_[turn]).toSend(SendingOrder(*this, turn));
}

ArrayToSend SentInputs::input(std::size_t index) const {
  const Input* const last = lastBefore(inputs_.size(), *proxyOf(inputs_[index]).content());
  return inTurn(last != nullptr ? last->turn : index);
}

std::optional<ArrayToSend> SendingOrder::elementToSend(const ArrayContent& content) const {
  // What nobody else holds is not an input.
  if (inputs_ != nullptr && content.use_count() > 1) {
    if (const auto* const last = inputs_->lastBefore(turn_, content)) {
      return inputs_->inTurn(last->turn);
    }
  }
  return std::nullopt;
}

}  // namespace hcy
