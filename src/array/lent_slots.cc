// SPDX-License-Identifier: Apache-2.0

#include "array/lent_slots.h"

#include "array/message_copy.h"
#include "wire/checked_size.h"
#include "wire/element_storage.h"

namespace hcy {

LentSlots::LentSlots(const Slots& slots, Elements& list) : list_(list) {
  const int size = checkedSize(slots.size());
  makeEmptyDouble(emptyDouble_);
  list_.DeleteSubrange(0, list_.size());
  list_.Reserve(size);
  try {
    for (const auto& slot : slots) list_.UnsafeArenaAddAllocated(lendable(slot));
  } catch (...) {
    takeBack();
    throw;
  }
}

void LentSlots::takeBack() {
  while (!list_.empty()) list_.UnsafeArenaReleaseLast();
}

// A slot that somebody else holds is sent as it is now, whatever is written into it before the
// message is serialised: by another input of the same call.
VORTEN_Array* LentSlots::lendable(const std::shared_ptr<VORTEN_Array>& slot) {
  if (!slot) return &emptyDouble_;
  if (slot.use_count() == 1) return slot.get();
  return copies_.emplace_back(copyOf(*slot)).get();
}

}  // namespace hcy
