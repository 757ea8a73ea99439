// SPDX-License-Identifier: Apache-2.0

#include "array/server_bridge.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "array/array_handle.h"
#include "array/array_proxy_builder.h"
#include "array/array_to_send.h"

namespace hcy {
namespace {

ArrayReading read(const std::uint8_t* bytes, std::size_t size, hcyArray** array) try {
  ReceivedArray received;
  if (!readReceived(received, {bytes, size})) return ArrayReading::kBroken;
  *array = ArrayProxyBuilder::over(std::move(received)).release();
  return ArrayReading::kWhole;
} catch (const std::bad_alloc&) {
  return ArrayReading::kNoMemory;
} catch (const std::exception&) {
  return ArrayReading::kNotServed;
}

const void* beginWriting(const hcyArray* array, std::size_t* size) try {
  auto writing = std::make_unique<SentArray>(proxyOf(array).toSend(SendingOrder()));
  *size = writing->size();
  return writing.release();
} catch (const std::exception&) {
  return nullptr;
}

std::uint8_t* write(const void* writing, std::uint8_t* out) {
  return static_cast<const SentArray*>(writing)->write(out);
}

void endWriting(const void* writing) { delete static_cast<const SentArray*>(writing); }

constexpr ServerBridge bridge = {read, beginWriting, write, endWriting};

}  // namespace

const ServerBridge& VORTENArrayProxy::serverBridge() const { return bridge; }

}  // namespace hcy
