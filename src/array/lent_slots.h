// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include "wire/array_class_traits.h"

namespace hcy {

using Elements = google::protobuf::RepeatedPtrField<VORTEN_Array>;
using Slots = std::vector<std::shared_ptr<VORTEN_Array>>;

// Lends the slots of a container to the list of its message, where they are read without a copy of
// each. The list is empty afterwards.
class LentSlots {
 public:
  // Throws positive overflow for more slots than the list can hold.
  LentSlots(const Slots& slots, Elements& list);
  LentSlots(const LentSlots&) = delete;
  LentSlots& operator=(const LentSlots&) = delete;
  ~LentSlots() { takeBack(); }

 private:
  void takeBack();
  VORTEN_Array* lendable(const std::shared_ptr<VORTEN_Array>& slot);

  Elements& list_;
  Slots copies_;
  VORTEN_Array emptyDouble_;  // stands for every slot that was never set
};

}  // namespace hcy
