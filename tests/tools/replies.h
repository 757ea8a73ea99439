// SPDX-License-Identifier: Apache-2.0
//
// Calls whose replies are made byte by byte.

#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "examples/outcome.h"
#include "support/script_server.h"
#include "support/script_steps.h"
#include "support/wire_bytes.h"

namespace hcy::test {

// What a command of hcy prints if the reply has this body.
inline Outcome replied(const std::string& command, const std::string& body,
                       const std::string& options = "") {
  ScriptServer server(
      {Connection{readRequest(), send(httpReply(200, "OK", body)), waitForClose()}});
  return run(HCY_PROGRAM " " + command + " " + server.url("/f") + " " + options);
}

inline Outcome called(const std::string& body, const std::string& options = "") {
  return replied("call", body, options);
}

inline constexpr unsigned kUint8 = 0, kUint16 = 2, kDouble = 9, kLogical = 10, kChar = 11,
                          kStruct = 12, kCell = 13, kSparse = 14;

// The field of an array that holds its elements: those of structs and cells change places.
inline unsigned partOf(unsigned type) {
  return type == kStruct ? 29 : type == kCell ? 28 : 16 + type;
}

inline std::string packed(std::initializer_list<std::uint64_t> numbers) {
  std::string bytes;
  for (const std::uint64_t number : numbers) bytes += varint(number);
  return bytes;
}

// An array of a class: type, dimensions, and the part that holds the elements if there is one.
inline std::string arrayOf(unsigned type, std::initializer_list<std::uint64_t> dimensions) {
  return numberField(1, type) + bytesField(2, packed(dimensions));
}
inline std::string arrayOf(unsigned type, std::initializer_list<std::uint64_t> dimensions,
                           const std::string& part) {
  return arrayOf(type, dimensions) + bytesField(partOf(type), part);
}

inline std::string doubles(int count) {
  return std::string(sizeof(double) * static_cast<std::size_t>(count), '\0');
}

}  // namespace hcy::test
