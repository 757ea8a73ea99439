// SPDX-License-Identifier: Apache-2.0

#include "text/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace hcy::tools {
namespace {

// Nobody misspells a word longer than this, and the time grows with the square.
constexpr std::size_t kLongest = 64;

// How many letters must be inserted, removed, replaced or exchanged with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> above(b.size() + 1);
  std::iota(above.begin(), above.end(), 0U);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::vector<std::size_t> row(b.size() + 1, i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
      const bool isExchange = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isExchange) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(above, std::move(row));
  }
  return above.back();
}

}  // namespace

std::string_view nearestWord(std::string_view word, const std::vector<std::string_view>& known) {
  if (word.size() > kLongest) return {};
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string_view candidate : known) {
    if (candidate.size() > kLongest) continue;
    const std::size_t longer = std::max(word.size(), candidate.size());
    if (longer - std::min(word.size(), candidate.size()) >= least) continue;
    const std::size_t differing = distance(word, candidate);
    if (differing < least) {
      least = differing;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string suggestionFor(std::string_view word, const std::vector<std::string_view>& known) {
  const std::string_view nearest = nearestWord(word, known);
  return nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
}

}  // namespace hcy::tools
