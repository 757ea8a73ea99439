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
    {"W5", "cell", 100'000},    {"W6", "text", mebi},
    {"W7", "uint64", 4 * mebi}, {"W8", "int64", 4 * mebi},
    {"W9", "ascii", mebi},
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

// Varints of every length evenly.
std::vector<std::uint64_t> uint64s(std::size_t count) {
  std::vector<std::uint64_t> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t bits = scattered(i);
    const std::uint64_t highest = std::uint64_t{1} << bits % 10 * 7 % 64;
    values[i] = highest | (scattered(bits) & (highest - 1));
  }
  return values;
}

// The same without the highest bit, half of them negated.
std::vector<std::int64_t> int64s(std::size_t count) {
  const std::vector<std::uint64_t> magnitudes = uint64s(count);
  std::vector<std::int64_t> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto magnitude = static_cast<std::int64_t>(magnitudes[i] >> 1U);
    values[i] = scattered(i) >> 63U == 0 ? magnitude : -magnitude - 1;
  }
  return values;
}

std::u16string ascii(std::size_t count) {
  std::u16string chars(count, u' ');
  for (std::size_t i = 0; i < count; ++i) {
    chars[i] = static_cast<char16_t>(u' ' + scattered(i) % 95);
  }
  return chars;
}

// 90 % ASCII, 8 % from the rest below U+0800, 2 % above, none of it surrogates.
std::u16string text(std::size_t count) {
  std::u16string chars = ascii(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t bits = scattered(i) >> 8U;
    if (bits % 100 >= 98) {
      chars[i] = static_cast<char16_t>(0x0800 + bits / 100 % 0xC800);
    } else if (bits % 100 >= 90) {
      chars[i] = static_cast<char16_t>(0x0080 + bits / 100 % 0x0780);
    }
  }
  return chars;
}

Workload make(std::string_view kind, std::size_t count) {
  if (kind == "double") return doubles(count);
  if (kind == "int16") return int16s(count);
  if (kind == "cell") return CellNumbers{doubles(count)};
  if (kind == "uint64") return uint64s(count);
  if (kind == "int64") return int64s(count);
  if (kind == "ascii") return ascii(count);
  if (kind == "text") return text(count);
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
