// SPDX-License-Identifier: Apache-2.0

#include <complex>
#include <optional>
#include <string>
#include <vector>

#include "notations/json_elements.h"
#include "notations/json_typed_value.h"
#include "text/source_text.h"

namespace hcy::tools {
namespace {

// A column takes 8 bytes even if it is empty and nothing is written for it: 128 MiB in all.
constexpr std::uint64_t kMostColumns = 16777216;

struct SparseData {
  std::size_t rows = 0, columns = 0;
  const JsonValue* entries = nullptr;
};

void requireRoom(std::size_t columns, std::size_t offset) {
  if (columns <= kMostColumns) return;
  throw BadText(offset, "a sparse array can have at most " + std::to_string(kMostColumns) +
                            " columns here, because each takes memory even if it is empty");
}

SparseData partsOf(const JsonValue& data) {
  SparseData parts;
  const auto* const object = data.as<JsonObject>();
  int found = 0;
  if (object != nullptr) {
    for (const JsonMember& member : *object) {
      ++found;
      if (member.name == "rows") {
        parts.rows = sizeFrom(member.value);
      } else if (member.name == "cols") {
        parts.columns = sizeFrom(member.value);
        requireRoom(parts.columns, member.value.offset);
      } else if (member.name == "entries" && member.value.as<JsonList>() != nullptr) {
        parts.entries = &member.value;
      } else {
        found = -1;
        break;
      }
    }
  }
  if (found != 3) {
    throw BadText(
        data.offset,
        R"(a sparse value must have the form {"rows": M, "cols": N, "entries": [[i, j, value], …]})");
  }
  return parts;
}

template <class T>
T sparseElement(const JsonList& entry) {
  if constexpr (std::is_same_v<T, std::complex<double>>) {
    return {elementFrom<double>(entry[2]), elementFrom<double>(entry[3])};
  } else {
    return elementFrom<T>(entry[2]);
  }
}

template <class T>
Array sparseOf(const SparseData& parts) {
  constexpr std::size_t length = std::is_same_v<T, std::complex<double>> ? 4 : 3;
  std::vector<hcyclient::Entry<T>> entries;
  for (const JsonValue& item : *parts.entries->as<JsonList>()) {
    const auto* const entry = item.as<JsonList>();
    if (entry == nullptr || entry->size() != length) {
      throw BadText(item.offset,
                    "a sparse entry must be [i, j, value], or [i, j, re, im] if all are complex");
    }
    const std::size_t row = sizeFrom((*entry)[0]);
    const std::size_t column = sizeFrom((*entry)[1]);
    if (row >= parts.rows || column >= parts.columns) {
      throw BadText(item.offset,
                    "the entry is outside the array; rows and columns are numbered from 0");
    }
    entries.push_back({row, column, sparseElement<T>(*entry)});
  }
  try {
    return Array::sparse<T>(parts.rows, parts.columns, std::move(entries));
  } catch (const hcyclient::UsageError& error) {
    throw BadText(parts.entries->offset, error.what());
  }
}

}  // namespace

Array sparseArray(const JsonValue& data, std::optional<hcyClassID> classId, bool isComplex) {
  const SparseData parts = partsOf(data);
  const JsonList& entries = *parts.entries->as<JsonList>();
  const auto* const first = entries.empty() ? nullptr : entries.front().as<JsonList>();
  const bool isLogical = first != nullptr && first->size() == 3 && (*first)[2].as<bool>();
  const hcyClassID wanted = classId.value_or(isLogical ? hcyLOGICAL_CLASS : hcyDOUBLE_CLASS);
  if (wanted == hcyLOGICAL_CLASS && !isComplex) return sparseOf<bool>(parts);
  if (wanted != hcyDOUBLE_CLASS) {
    throw BadText(data.offset, "a sparse array must be double, complex double or logical");
  }
  if (isComplex || (first != nullptr && first->size() == 4)) {
    return sparseOf<std::complex<double>>(parts);
  }
  return sparseOf<double>(parts);
}

}  // namespace hcy::tools
