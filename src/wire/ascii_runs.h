// SPDX-License-Identifier: Apache-2.0
//
// Runs of ASCII in UTF-16 and in varints.

#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace hcy {

// How much of a run is read or written at once. Compilers vectorize the two loops.
inline constexpr std::size_t kRun = 8;

// How many of the lowest bits are set, at most as many as are used at once.
inline std::size_t runLength(std::uint64_t bits) {
  return std::min(static_cast<std::size_t>(std::countr_one(bits)), kRun);
}

template <class Unit>
void widenRun(const std::uint8_t* bytes, Unit* units) {
  for (std::size_t i = 0; i < kRun; ++i) units[i] = static_cast<Unit>(bytes[i]);
}

template <class Unit>
void narrowRun(const Unit* units, std::uint8_t* bytes) {
  for (std::size_t i = 0; i < kRun; ++i) bytes[i] = static_cast<std::uint8_t>(units[i]);
}

inline constexpr std::size_t kUnits = 64;

// One bit for each of 64 units, the lowest for the first: set if the unit is ASCII.
inline std::uint64_t asciiUnitsPortably(const char16_t* units) {
  std::uint64_t ascii = 0;
  for (std::size_t i = 0; i < kUnits; ++i) ascii |= std::uint64_t{units[i] < 0x80} << i;
  return ascii;
}

inline std::uint64_t asciiUnits(const char16_t* units) {
#ifdef __SSE2__
  std::uint64_t ascii = 0;
  const auto areAscii = [units](std::size_t i) {
    const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + i));
    return _mm_cmpeq_epi16(_mm_srli_epi16(eight, 7), _mm_setzero_si128());
  };
  for (std::size_t i = 0; i < kUnits; i += 16) {
    const __m128i sixteen = _mm_packs_epi16(areAscii(i), areAscii(i + 8));
    ascii |= static_cast<std::uint64_t>(_mm_movemask_epi8(sixteen)) << i;
  }
  return ascii;
#else
  return asciiUnitsPortably(units);
#endif
}

}  // namespace hcy
