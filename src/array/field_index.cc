// SPDX-License-Identifier: Apache-2.0

#include "array/field_index.h"

#include <algorithm>
#include <memory>
#include <new>

namespace hcy {

int FieldIndex::find(const VORTEN_Array::Struct& names, std::string_view name,
                     const Numbers* numbers) {
  if (numbers == nullptr) {
    const auto& all = names.field_names();
    const auto found = std::find(all.begin(), all.end(), name);
    return found == all.end() ? -1 : static_cast<int>(found - all.begin());
  }
  const auto found = numbers->find(name);
  return found == numbers->end() ? -1 : found->second;
}

// Null without memory for it.
const FieldIndex::Numbers* FieldIndex::numbersOf(const VORTEN_Array::Struct& names) const {
  if (const Numbers* const made = numbers_.load(std::memory_order_acquire)) return made;
  try {
    auto numbers = std::make_unique<Numbers>();
    numbers->reserve(static_cast<std::size_t>(names.field_names_size()));
    // The first field of a name counts.
    for (int i = 0; i < names.field_names_size(); ++i) numbers->emplace(names.field_names(i), i);
    // If another thread is faster, its index is the one.
    const Numbers* made = nullptr;
    if (numbers_.compare_exchange_strong(made, numbers.get(), std::memory_order_acq_rel)) {
      made = numbers.release();
    }
    return made;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void FieldIndex::reset() { delete numbers_.exchange(nullptr, std::memory_order_acq_rel); }

}  // namespace hcy
