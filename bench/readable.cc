// SPDX-License-Identifier: Apache-2.0

#include "readable.h"

#include <algorithm>

namespace hcy::bench {
namespace {

struct ToReadable {
  template <class Number>
  Readable operator()(const std::vector<Number>& values) const {
    return {values.size(), 1, std::span(values)};
  }
  Readable operator()(const CellNumbers& cells) const { return {cells.numbers.size(), 1, cells}; }
  Readable operator()(const std::u16string& text) const {
    return {1, text.size(), std::u16string_view(text)};
  }
};

const std::vector<double>& elementsOf(const CellNumbers& cells) { return cells.numbers; }
template <class Elements>
const Elements& elementsOf(const Elements& elements) {
  return elements;
}

}  // namespace

Readable readableOf(const Workload& workload) { return std::visit(ToReadable(), workload); }

bool equals(const Readable& left, const Readable& right) {
  if (left.rows != right.rows || left.columns != right.columns) return false;
  if (left.elements.index() != right.elements.index()) return false;
  return std::visit(
      [&right](const auto& elements) {
        using Elements = std::remove_cvref_t<decltype(elements)>;
        return std::ranges::equal(elementsOf(elements),
                                  elementsOf(std::get<Elements>(right.elements)));
      },
      left.elements);
}

}  // namespace hcy::bench
