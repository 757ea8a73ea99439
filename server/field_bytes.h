// SPDX-License-Identifier: Apache-2.0
//
// Fields of a message, written one by one.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wire/bytes.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy::server {

// The numbers of the fields.
inline constexpr int kParamsNargout = 1;
inline constexpr int kParamsInput = 2;
inline constexpr int kResultOutput = 1;
inline constexpr int kResultError = 2;
inline constexpr int kErrorMessage = 1;
inline constexpr int kErrorIdentifier = 2;
inline constexpr int kErrorFrame = 3;
inline constexpr int kFrameFile = 1;
inline constexpr int kFrameName = 2;
inline constexpr int kFrameLine = 3;

inline Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

constexpr std::size_t fieldSize(int number, std::size_t length) {
  return varintSize(lengthDelimitedTag(number)) + varintSize(length) + length;
}

// The beginning of a field; its content comes next.
inline std::uint8_t* beginField(int number, std::size_t length, std::uint8_t* out) {
  return writeVarint(length, writeVarint(lengthDelimitedTag(number), out));
}

inline std::uint8_t* writeField(int number, Bytes content, std::uint8_t* out) {
  return copyBytes(content, beginField(number, content.size(), out));
}

}  // namespace hcy::server
