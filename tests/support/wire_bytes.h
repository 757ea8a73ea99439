// SPDX-License-Identifier: Apache-2.0
//
// Reply bodies made byte by byte, for tests that hold no message classes of their own.

#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace hcy::test {

inline std::string varint(std::uint64_t value) {
  std::string bytes;
  for (; value >= 0x80; value >>= 7) bytes += static_cast<char>(value | 0x80);
  return bytes += static_cast<char>(value);
}

// A field of a message: a number, or anything that carries its length in front.
inline std::string numberField(unsigned field, std::uint64_t value) {
  return varint(field << 3) + varint(value);
}
inline std::string bytesField(unsigned field, std::string_view bytes) {
  return varint(field << 3 | 2) + varint(bytes.size()) + std::string(bytes);
}

// A 1-by-1 double array.
inline std::string doubleScalar(double value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return numberField(1, 9) + bytesField(2, "\x01\x01") + bytesField(25, bytesField(1, bytes));
}

// A body with these arrays as outputs.
inline std::string resultOf(const std::vector<std::string>& arrays) {
  std::string body;
  for (const std::string& array : arrays) body += bytesField(1, array);
  return body;
}

// One frame of the stack of an error.
inline std::string stackFrame(std::string_view file, std::string_view name, std::int32_t line) {
  return bytesField(1, file) + bytesField(2, name) +
         numberField(3, static_cast<std::uint64_t>(static_cast<std::int64_t>(line)));
}

// A body with an error.
inline std::string errorResult(std::string_view message, std::string_view identifier,
                               const std::vector<std::string>& frames = {}) {
  std::string error = bytesField(1, message) + bytesField(2, identifier);
  for (const std::string& frame : frames) error += bytesField(3, frame);
  return bytesField(2, error);
}

}  // namespace hcy::test
