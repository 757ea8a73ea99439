// SPDX-License-Identifier: Apache-2.0
//
// What a server in this process needs beyond the C API: arrays from and to their wire form, by the
// reader and the writer that calls use. It is not exported; a server finds it by the handle of any
// array. If it changes, ServedArray gets another number.

#pragma once

#include <cstddef>
#include <cstdint>

#include "array/served_array.h"
#include "hcy/hcyclient.h"

namespace hcy {

enum class ArrayReading : std::int32_t {
  kWhole,
  kBroken,     // malformed or cut; there is no handle
  kNotServed,  // well-formed, but of a class that has no handles
  kNoMemory,
};

struct ServerBridge {
  // Reads an array; the caller destroys the handle.
  ArrayReading (*read)(const std::uint8_t* bytes, std::size_t size, hcyArray** array);
  // Prepares to write an array, which must not change until the end; null if memory runs out.
  const void* (*beginWriting)(const hcyArray* array, std::size_t* size);
  // Writes as many bytes as there are, and returns their end.
  std::uint8_t* (*write)(const void* writing, std::uint8_t* out);
  void (*endWriting)(const void* writing);
};

// The bridge of the library that made the array; null if that is another bridge than this one.
inline const ServerBridge* serverBridgeOf(const hcyArray* array) {
  const auto* const served = dynamic_cast<const ServedArray*>(array);
  return served != nullptr ? &served->serverBridge() : nullptr;
}

}  // namespace hcy
