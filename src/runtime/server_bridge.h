// SPDX-License-Identifier: Apache-2.0
//
// What a server in this process needs beyond the C API: arrays from and to their wire form, by the
// reader and the writer that calls use. It is no part of the C API, and serves a server of the same
// version alone. hcyInitializeEx(kServerBridge) returns it, so nothing more is exported.

#pragma once

#include <cstddef>
#include <cstdint>

#include "hcy/hcyclient.h"

namespace hcy {

inline constexpr int kServerBridge = 0x53525631;
// A runtime table begins with a function, so its first bytes are different.
inline constexpr std::uint64_t kServerBridgeMagic = 0x6879632d73727631;

enum class ArrayReading : std::int32_t {
  kWhole,
  kBroken,     // malformed or cut; there is no handle
  kNotServed,  // well-formed, but of a class that has no handles
  kNoMemory,
};

struct ServerBridge {
  std::uint64_t magic;
  // Reads an array; the caller destroys the handle.
  ArrayReading (*read)(const std::uint8_t* bytes, std::size_t size, hcyArray** array);
  // Prepares to write an array, which must not change until the end; null if memory runs out.
  const void* (*beginWriting)(const hcyArray* array, std::size_t* size);
  // Writes as many bytes as there are, and returns their end.
  std::uint8_t* (*write)(const void* writing, std::uint8_t* out);
  void (*endWriting)(const void* writing);
};

const ServerBridge& serverBridge();

}  // namespace hcy
