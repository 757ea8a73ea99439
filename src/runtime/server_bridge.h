// SPDX-License-Identifier: Apache-2.0
//
// What a server in this process needs beyond the C API: arrays from and to their wire form, by the
// reader and the writer that calls use. It is no part of the C API, and serves a server of the same
// version alone. It lies behind the runtime table, so nothing more is exported.

#pragma once

#include <cstddef>
#include <cstdint>

#include "hcy/hcyclient.h"

namespace hcy {

inline constexpr std::uint64_t kServerBridgeMagic = 0x6879632d73727631;

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

const ServerBridge& serverBridge();

// What hcyInitializeEx() allocates: a program knows its first member alone.
struct RuntimeRecord {
  hcyClientRuntime table{};
  std::uint64_t magic = kServerBridgeMagic;
  const ServerBridge* bridge = &serverBridge();
};

}  // namespace hcy
