// SPDX-License-Identifier: Apache-2.0

#include "value.h"

#include <new>
#include <stdexcept>

#include "array/server_bridge.h"
#include "field_bytes.h"

namespace hcy::server {
namespace {

// The numbers of fields of an array.
constexpr int kDimension = 2;
constexpr int kMemoryLayout = 6;
constexpr int kFirstPart = 16;
constexpr int kLastPart = 30;

const ServerBridge& findBridge() {
  const Array any(0.0);
  const ServerBridge* const found = serverBridgeOf(any.get());
  if (found == nullptr) {
    throw std::runtime_error(
        "libhcyclient and libhcyclient-server are not of the same version: install both from one "
        "release");
  }
  return *found;
}

// The library's own reader and writer.
const ServerBridge& bridge() {
  static const ServerBridge& found = findBridge();
  return found;
}

// How many bytes in memory stand for one byte on the wire, at most; of what is not kept as
// elements, about as many as honest messages need.
std::size_t growthOf(int field) {
  constexpr std::size_t growths[kLastPart - kFirstPart + 1] = {
      1,  1,  // bytes
      2,  2,  // varints of 16 bits
      1,  1,  // fixed
      8,  8,  // varints of 64 bits
      1,  1, 1,
      2,   // code units
      8,   // elements of cells, which are kept packed with an index
      24,  // elements of structs, and names of fields
      8,   // indices
  };
  if (field == kDimension) return 8;
  return field >= kFirstPart && field <= kLastPart ? growths[field - kFirstPart] : 64;
}

}  // namespace

void requireMatchingLibrary() { findBridge(); }

std::optional<Value> readValue(Bytes bytes) {
  Value value{Array(), bytes};
  hcyArray* handle = nullptr;
  switch (bridge().read(bytes.data(), bytes.size(), &handle)) {
    case ArrayReading::kBroken:
      return std::nullopt;
    case ArrayReading::kNoMemory:
      throw std::bad_alloc();
    case ArrayReading::kWhole:
    case ArrayReading::kNotServed:
      break;
  }
  value.array = Array::adopt(handle);
  forEachField(bytes, [&value](const WireField& field) {
    if (field.isVarint(kMemoryLayout)) value.isColumnMajor = field.value == 0;
    return true;
  });
  return value;
}

std::size_t memoryOfValue(Bytes bytes) {
  std::size_t memory = kArrayMemory;
  forEachField(bytes, [&memory](const WireField& field) {
    memory += growthOf(field.number()) * (field.end - field.begin);
    return true;
  });
  return memory;
}

void WrittenValue::End::operator()(const void* writing) const { bridge().endWriting(writing); }

WrittenValue::WrittenValue(const Value& value) : bytes_(value.bytes), size_(value.bytes.size()) {
  if (!value.array) return;
  writing_.reset(bridge().beginWriting(value.array.get(), &size_));
  if (!writing_) throw std::bad_alloc();
}

std::uint8_t* WrittenValue::write(std::uint8_t* out) const {
  return writing_ ? bridge().write(writing_.get(), out) : copyBytes(bytes_, out);
}

WrittenResult::WrittenResult(std::span<const Value> outputs) {
  outputs_.reserve(outputs.size());
  for (const Value& output : outputs) {
    size_ += fieldSize(kResultOutput, outputs_.emplace_back(output).size());
  }
}

void WrittenResult::write(std::uint8_t* out) const {
  for (const WrittenValue& output : outputs_) {
    out = output.write(beginField(kResultOutput, output.size(), out));
  }
}

}  // namespace hcy::server
