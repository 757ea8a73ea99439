// SPDX-License-Identifier: Apache-2.0

#include "reply_size.h"

#include <algorithm>
#include <limits>
#include <string>

namespace hcy::tools {
namespace {

using hcyclient::Array;

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

std::uint64_t sum(std::uint64_t a, std::uint64_t b) { return a > kMost - b ? kMost : a + b; }
std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  return b != 0 && a > kMost / b ? kMost : a * b;
}

// How many bytes an element of the class takes in a message at the least.
std::uint64_t leastOnWire(const Array& array) {
  switch (array.classId()) {
    case hcyDOUBLE_CLASS:
      return 8;
    case hcySINGLE_CLASS:
    case hcyINT32_CLASS:
    case hcyUINT32_CLASS:
      return 4;
    default:
      return 1;
  }
}

std::uint64_t inMemory(const Array& array) { return hcyGetElementSize(array.get()); }

// Where bytes are counted: what the elements of full arrays take, an index of a sparse array, and a
// place in a container.
struct Scale {
  std::uint64_t (*ofElement)(const Array&);
  std::uint64_t ofIndex, ofPlace;
};

// Adds up without reading elements, until there are more than `limit`.
std::uint64_t total(const Array& array, const Scale& scale, std::uint64_t limit) {
  if (array.isSparse()) {
    const std::uint64_t stored = std::min(hcyGetNzmax(array.get()), array.size());
    return sum(product(stored, scale.ofElement(array) + scale.ofIndex),
               product(sum(array.columns(), 1), scale.ofIndex));
  }
  if (!array.isCell() && !array.isStruct()) {
    return product(array.size(), scale.ofElement(array) * (array.isComplex() ? 2 : 1));
  }
  const std::vector<std::string> fields = array.fieldNames();
  const std::uint64_t each = array.isCell() ? 1 : fields.size();
  std::uint64_t bytes = product(array.size(), scale.ofPlace);
  for (std::size_t i = 0; each > 0 && i < array.size() && bytes <= limit; ++i) {
    for (std::size_t field = 0; field < each; ++field) {
      const Array element = array.isCell() ? array[i] : array(i, fields[field]);
      bytes = sum(bytes, total(element, scale, limit));
    }
  }
  return bytes;
}

}  // namespace

std::uint64_t elementBytes(const hcyclient::Array& array) {
  return total(array, {inMemory, sizeof(std::size_t), 0}, kMost);
}

void requireNoMoreThanCame(const std::vector<hcyclient::Array>& arrays, std::uint64_t replyBytes) {
  std::uint64_t bytes = 0;
  for (const Array& array : arrays) {
    bytes = sum(bytes, total(array, {leastOnWire, 1, 1}, replyBytes));
  }
  if (bytes > replyBytes) {
    throw hcyclient::UsageError("an output says that it is larger than a reply of " +
                                std::to_string(replyBytes) + " bytes (--max-reply) can be");
  }
}

}  // namespace hcy::tools
