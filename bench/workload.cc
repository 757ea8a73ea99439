// SPDX-License-Identifier: Apache-2.0

#include "workload.h"

#include <charconv>
#include <stdexcept>

namespace hcy::bench {
namespace {

constexpr std::size_t kibi = 1024;
constexpr std::size_t mebi = kibi * kibi;

struct NamedWorkload {
  std::string_view name;
  std::string_view kind;
  std::size_t count;
};

constexpr NamedWorkload namedWorkloads[] = {
    {"W1", "double", 1},        {"W2", "double", mebi / sizeof(double)},
    {"W3", "double", 4 * mebi}, {"W4", "int16", 4 * mebi},
    {"W5", "cell", 100'000},    {"W6", "char", mebi},
};

// Spread over the 64-bit numbers, the same in every process (the step of Weyl's sequence in
// splitmix64).
std::uint64_t scattered(std::size_t index) {
  std::uint64_t bits = (index + 1) * 0x9E3779B97F4A7C15U;
  bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
  return bits ^ (bits >> 27U);
}

std::vector<double> doubles(std::size_t count) {
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = static_cast<double>(scattered(i) >> 11U) * 0x1p-53;
  }
  return values;
}

// The whole range, so half of them negative, in an order that no branch predictor learns.
std::vector<std::int16_t> int16s(std::size_t count) {
  std::vector<std::int16_t> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<std::int16_t>(scattered(i));
  return values;
}

// ASCII, as most text is.
std::u16string chars(std::size_t count) {
  std::u16string text(count, u' ');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char16_t>(u' ' + scattered(i) % 95);
  }
  return text;
}

Workload make(std::string_view kind, std::size_t count) {
  if (kind == "double") return doubles(count);
  if (kind == "int16") return int16s(count);
  if (kind == "cell") return CellNumbers{doubles(count)};
  if (kind == "char") return chars(count);
  throw std::invalid_argument("no workload of kind " + std::string(kind));
}

}  // namespace

Workload workloadOf(std::string_view text) {
  for (const NamedWorkload& named : namedWorkloads) {
    if (named.name == text) return make(named.kind, named.count);
  }
  const std::size_t colon = text.find(':');
  std::size_t count = 0;
  if (colon != std::string_view::npos) {
    const std::string_view digits = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (error == std::errc() && end == digits.data() + digits.size() && count > 0) {
      return make(text.substr(0, colon), count);
    }
  }
  throw std::invalid_argument("no workload " + std::string(text));
}

}  // namespace hcy::bench
