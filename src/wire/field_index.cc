// SPDX-License-Identifier: Apache-2.0

#include "wire/field_index.h"

#include <algorithm>
#include <memory>
#include <new>

namespace hcy {

int FieldIndex::find(const Names& names, std::string_view name, const Numbers* numbers) {
  if (numbers == nullptr) {
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
  }
  const auto found = numbers->find(name);
  return found == numbers->end() ? -1 : found->second;
}

// Null without memory for it.
const FieldIndex::Numbers* FieldIndex::numbersOf(const Names& names) const {
  if (const Numbers* const made = numbers_.load(std::memory_order_acquire)) return made;
  try {
    auto numbers = std::make_unique<Numbers>();
    numbers->reserve(names.size());
    // The first field of a name counts.
    for (std::size_t i = 0; i < names.size(); ++i) numbers->emplace(names[i], static_cast<int>(i));
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
