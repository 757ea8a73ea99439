// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hcy {

// Finds the fields of a struct by their names. The index is made when it is first needed, by
// whichever thread needs it, and only for a struct of many fields.
class FieldIndex {
 public:
  using Names = std::vector<std::string>;

  FieldIndex() = default;
  FieldIndex(const FieldIndex&) = delete;
  FieldIndex& operator=(const FieldIndex&) = delete;
  ~FieldIndex() { reset(); }

  // The number of the first field of that name; -1 if there is none.
  int find(const Names& names, std::string_view name) const {
    return find(names, name, names.size() > kFewFields ? numbersOf(names) : nullptr);
  }

  // The same for a name that is about to be added, which is not worth an index.
  int findBeforeChange(const Names& names, std::string_view name) const {
    return find(names, name, numbers_.load(std::memory_order_acquire));
  }

  // To be called before a name is added or removed.
  void reset();

 private:
  using Numbers = std::unordered_map<std::string_view, int>;

  // Up to here, comparing the names is as fast.
  static constexpr std::size_t kFewFields = 16;

  static int find(const Names& names, std::string_view name, const Numbers* numbers);
  const Numbers* numbersOf(const Names& names) const;

  mutable std::atomic<const Numbers*> numbers_ = nullptr;
};

}  // namespace hcy
