// SPDX-License-Identifier: Apache-2.0
//
// Where varints end in a block of bytes: at every byte without the highest bit.

#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "wire/fixed_width.h"

namespace hcy {

inline constexpr std::size_t kBlock = 64;

// The first byte becomes the lowest of the word.
template <class Word = std::uint64_t>
Word loadLittleEndian(const std::uint8_t* bytes) {
  Word word = 0;
  copyFixedWidth<Word>({bytes, sizeof word}, reinterpret_cast<std::uint8_t*>(&word));
  return word;
}

inline void storeLittleEndian(std::uint64_t word, std::uint8_t* bytes) {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  std::memcpy(bytes, &word, sizeof word);
}

// One bit for each byte of a block, the lowest for the first: set if a varint ends there.
inline std::uint64_t varintEndsPortably(const std::uint8_t* block) {
  std::uint64_t ends = 0;
  for (std::size_t i = 0; i < kBlock; i += 8) {
    const std::uint64_t highest = ~loadLittleEndian(block + i) >> 7 & 0x0101010101010101U;
    // The product brings the lowest bit of byte k to bit 56 + k.
    ends |= (highest * 0x0102040810204080U) >> 56 << i;
  }
  return ends;
}

inline std::uint64_t varintEnds(const std::uint8_t* block) {
#ifdef __SSE2__
  std::uint64_t continued = 0;
  for (std::size_t i = 0; i < kBlock; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
    continued |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(bytes)))
                 << i;
  }
  return ~continued;
#else
  return varintEndsPortably(block);
#endif
}

// How many bits are set; std::popcount() calls a function where not every processor of the
// architecture has an instruction for it.
constexpr std::size_t countBits(std::uint64_t bits) {
  bits -= bits >> 1 & 0x5555555555555555U;
  bits = (bits & 0x3333333333333333U) + (bits >> 2 & 0x3333333333333333U);
  bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0FU;
  return bits * 0x0101010101010101U >> 56;
}

}  // namespace hcy
