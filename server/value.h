// SPDX-License-Identifier: Apache-2.0
//
// Arrays of requests and replies, as handles of the C API and as bytes.

#pragma once

#include <cstddef>
#include <cstdint>
#include <hcy/hcyclient.hpp>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "byte_buffer.h"
#include "wire/bytes.h"

namespace hcy::server {

using hcyclient::Array;

// An argument or an output.
struct Value {
  // Empty if the class is one that has no handles.
  Array array;
  // Of an argument: the bytes of the request that it was read from.
  Bytes bytes{};
  bool isColumnMajor = true;
};

// Throws std::runtime_error if the libhcyclient of this process is not of the server's version.
void requireMatchingLibrary();

// Nothing if the bytes are not an array. Throws std::bad_alloc.
std::optional<Value> readValue(Bytes bytes);

// Roughly how much memory an array takes beside its bytes when it has been read.
std::size_t memoryOfValue(Bytes bytes);
// What an array takes that has few elements or none.
inline constexpr std::size_t kArrayMemory = 512;

// An output in wire form. The value must live longer and not change.
class WrittenValue {
 public:
  // Throws std::bad_alloc.
  explicit WrittenValue(const Value& value);

  std::size_t size() const { return size_; }
  std::uint8_t* write(std::uint8_t* out) const;

 private:
  struct End {
    void operator()(const void* writing) const;
  };
  std::unique_ptr<const void, End> writing_;
  Bytes bytes_;
  std::size_t size_ = 0;
};

// A VORTEN_Result with these outputs; the same holds.
class WrittenResult {
 public:
  explicit WrittenResult(std::span<const Value> outputs);

  std::size_t size() const { return size_; }
  void write(std::uint8_t* out) const;

 private:
  std::vector<WrittenValue> outputs_;
  std::size_t size_ = 0;
};

}  // namespace hcy::server
