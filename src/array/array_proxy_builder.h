// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "array/array_proxy.h"
#include "wire/bytes.h"

namespace hcy {

// An array of a reply, on its way to a handle, which takes the elements of a 16-bit class out of
// it.
struct ReceivedArray {
  ContentPtr content;
};

// Builds the proxy class that serves a class of arrays; throws std::invalid_argument
// "dispatch_on_QXType" for a type that is not served.
class ArrayProxyBuilder {
 public:
  // Over content that the proxy shares.
  static std::unique_ptr<VORTENArrayProxy> over(const ContentPtr& content);

  // Over an array of a reply.
  static std::unique_ptr<VORTENArrayProxy> over(ReceivedArray&& array);

  // Over new content: `count` zeros, or never-set slots.
  static std::unique_ptr<VORTENArrayProxy> create(VORTEN_Array::QXType type, Dimensions dimensions,
                                                  bool complex, std::uint64_t count);
};

// Reads an array of a reply as far as it arrived and is well-formed; false if that is not all. If
// there is an owner of the bytes, elements may stay in its memory, which must be writable.
bool readReceived(ReceivedArray& array, Bytes bytes, const std::shared_ptr<void>& owner = nullptr);

}  // namespace hcy
